package Qiro_Plugin;

sub run_process {
    my ($request) = @_;
    return (candidate => [{hyoki => $request->{composition_string}}]);
}

1;
