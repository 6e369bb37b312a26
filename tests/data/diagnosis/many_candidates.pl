package Qiro_plugin;

sub run_process {
    my $count = $ENV{'QIRO_TEST_CANDIDATES'};
    return (candidate => [ map { { hyoki => "c$_" } } (0 .. $count - 1) ]);
}

1;
