# A plug-in with a branch that no case takes: lines 9 and 10.
package Qiro_plugin;

sub describe {
    my ($text) = @_;
    my $kind;
    if ($text =~ /^a/) { $kind = "starts with a"; }
    else {
        $kind = "other";
        $kind .= "!";
    }
    return $kind;
}

sub run_process {
    my $request = $_[-1];
    my $text = $request->{composition_string};
    return (candidate => [{hyoki => $text, comment => describe($text)}]);
}

1;
