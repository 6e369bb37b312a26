# Returns the written form with a call counter: a fresh process (or fork) always says 1.
package Qiro_plugin;
print STDERR "echo_state loaded\n";
my $calls = 0;
sub run_process {
    my ($request) = @_;
    $calls++;
    my $form = $request->{'composition_string'};
    return ('candidate' => [
        {'hyoki' => $form, 'comment' => "call $calls: $form / " . $request->{'reading_string'},
         'info' => length($form)},
        {'hyoki' => "$form#$calls", 'alternative_type' => 'definite_string',
         'alternative' => $form x 3, 'alternative_alias' => $form},
    ]);
}
1;
