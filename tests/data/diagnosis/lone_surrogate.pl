package Qiro_plugin;

sub run_process {
    return ('candidate' => [ { 'hyoki' => "smile \x{D83D}" } ]);
}

1;
