package Qiro_plugin;

sub run_process {
    return ('candidate' => [ { 'hyoki' => "far \x{110000}" } ]);
}

1;
