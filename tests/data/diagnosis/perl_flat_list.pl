package Qiro_plugin;

sub run_process {
    my ($request) = @_;
    my @list = ({hyoki => 'one'}, {hyoki => 'two'});
    return (candidate => @list);
}

1;
