# Fixture: a well-formed answer without any candidate.
package Qiro_plugin;

sub run_process {
    return (candidate => []);
}

1;
