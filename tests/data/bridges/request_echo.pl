# Hands the request back: one candidate per key for run_process, a printed line otherwise.
package Qiro_plugin;

use strict;
use Encode;

sub describe {
    my ($request) = @_;
    return map { $_ . '=' . $request->{$_} } sort(keys(%{$request}));
}

sub run_process {
    my ($request) = @_;
    my @candidates;
    foreach my $key (sort(keys(%{$request}))) {
        my %candidate = ('hyoki' => $key . '=' . $request->{$key});
        $candidate{'info'} = 'integer' if ($key eq 'proxy_port' && $request->{$key} =~ /\A-?\d+\z/);
        push(@candidates, \%candidate);
    }
    return ('candidate' => \@candidates);
}

sub run_preference {
    my ($request) = @_;
    print Encode::encode_utf8('run_preference:' . join(';', describe($request)));
}

sub run_callback {
    my ($request) = @_;
    print Encode::encode_utf8('run_callback:' . join(';', describe($request)));
}

1;
