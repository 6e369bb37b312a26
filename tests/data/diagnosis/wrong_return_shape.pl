package Qiro_plugin;

sub run_process {
    return { candidate => [ { hyoki => "x" } ] };
}

1;
