package Qiro_plugin;

sub run_process {
    print "looking up\n";
    return (candidate => [ { hyoki => "x" } ]);
}

1;
