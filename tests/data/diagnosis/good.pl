package Qiro_plugin;

sub run_process {
    my ($request) = @_;
    return (candidate => [ { hyoki => $request->{composition_string} } ]);
}

1;
