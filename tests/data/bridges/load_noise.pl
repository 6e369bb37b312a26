# Writes to standard output while it loads and while it runs.
package Qiro_plugin;

use strict;

print '[loading]';

sub run_process {
    print "[running]\n";
    return ('candidate' => [ { 'hyoki' => 'noise' } ]);
}

sub run_preference {
    print '[preference]';
}

sub run_callback {
    print '[callback]';
}

1;
