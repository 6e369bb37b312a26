# Returns the written form with a call counter: a fresh process (or fork) always says 1. On "a" it
# warns and exits 0 without a document: only the exit status tells that warning from an error.
package Qiro_plugin;
print STDERR "echo_state loaded\n";
my $calls = 0;
sub run_process {
    my ($request) = @_;
    $calls++;
    my $form = $request->{'composition_string'};
    if ($form eq 'a') {
        warn "echo_state gives up";
        exit(0);
    }
    return ('candidate' => [
        {'hyoki' => $form, 'comment' => "call $calls: $form / " . $request->{'reading_string'},
         'info' => length($form)},
        {'hyoki' => "$form#$calls", 'alternative_type' => 'definite_string',
         'alternative' => $form x 3, 'alternative_alias' => $form},
    ]);
}
1;
