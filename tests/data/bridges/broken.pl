# Does not compile.
package Qiro_plugin;

sub run_process {
    return ('candidate' => [ ];
}

1;
