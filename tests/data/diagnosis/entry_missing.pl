package Plugin;

sub run_process {
    return (candidate => [ { hyoki => "x" } ]);
}

1;
