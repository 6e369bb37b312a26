# Fixture: tries what a confined plug-in must not do and says, one candidate per attempt, what
# worked. The written form is the port of a listener on 127.0.0.1.
package Qiro_plugin;

use strict;
use warnings;
use File::Basename ();
use File::Spec ();
use IO::Socket::INET;

sub attempt {
    my ($name, $action) = @_;
    return { hyoki => $name . (eval { $action->(); 1 } ? ':ok' : ':denied') };
}

sub write_and_remove {
    my ($path) = @_;
    open(my $file, '>', $path) or die;
    close $file;
    unlink $path or die;
}

sub run_process {
    my ($request) = @_;
    my $home = $ENV{HOME};
    my $port = $request->{composition_string};
    my $own = File::Basename::dirname(File::Spec->rel2abs(__FILE__));
    my @candidates = (
        attempt('read', sub { open(my $file, '<', "$home/secret.txt") or die; }),
        attempt('write', sub { write_and_remove("$own/written.txt"); }),
        attempt('escape', sub { open(my $file, '>', "$home/escaped.txt") or die; }),
        attempt('data', sub { write_and_remove('written.txt'); }),
        attempt('connect', sub {
            IO::Socket::INET->new(PeerAddr => '127.0.0.1', PeerPort => $port, Proto => 'tcp',
                                  Timeout => 2) or die;
        }),
    );
    my %result = (candidate => \@candidates);
    return wantarray ? %result : \%result;
}

1;
