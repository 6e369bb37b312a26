package Qiro_plugin;

sub lookup {
    die "no word for this reading\n";
}

sub run_process {
    my ($request) = @_;
    lookup($request->{composition_string});
    return (candidate => []);
}

1;
