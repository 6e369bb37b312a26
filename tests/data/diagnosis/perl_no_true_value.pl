package Qiro_plugin;

sub run_process {
    my ($request) = @_;
    return (candidate => [{hyoki => 'x'}]);
}

0;

# the end
