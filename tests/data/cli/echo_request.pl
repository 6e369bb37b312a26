# Fixture: one candidate with the written form and the proxy port.
package Qiro_plugin;
use strict;
use warnings;

sub run_process {
    my ($request) = @_;
    my %result = (candidate => [
        {
            hyoki => $request->{composition_string},
            comment_xhtml => 'port=' . $request->{proxy_port},
            info => 'pl',
        },
    ]);
    return %result;
}

1;
