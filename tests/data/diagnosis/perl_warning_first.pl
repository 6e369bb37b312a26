package Qiro_plugin;
use strict;
use warnings;
use utf8;

sub run_process {
    my ($request) = @_;
    die "変換できません\n辞書がありません\n";
}

1;
