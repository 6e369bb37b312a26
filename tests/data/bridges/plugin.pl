# Marks its loading and running, then returns the result spelled in JSON as the written form,
# or one candidate per request value.
package Qiro_plugin;

use strict;
use Encode;
use JSON::PP;

print '[loaded]';

sub describe {
    my ($request) = @_;
    return map { $_ . '=' . $request->{$_} } sort(keys(%{$request}));
}

sub run_process {
    my ($request) = @_;
    print "[run]\n";
    my $text = $request->{'composition_string'};
    # UTF-8 byte strings: 200 characters of three bytes each.
    return ('candidate' => [ { 'hyoki' => Encode::encode_utf8("\x{8868}\x{8a18}") },
                             { 'hyoki' => 'bytes', 'alternative_type' => 'url_jump_string',
                               'alternative' => Encode::encode_utf8("\x{3042}" x 200) } ])
        if ($text eq 'bytes');
    # A lone surrogate, which JSON::PP refuses to decode.
    return ('candidate' => [ { 'hyoki' => "a\x{D800}b\x{DC00}" } ]) if ($text eq 'surrogate');
    return ('candidate' => [ { 'hyoki' => "a\x{110000}" } ]) if ($text eq 'beyond');
    return %{ JSON::PP->new->decode($text) } if ($text =~ /\A\{/);
    return ('candidate' => [ map { { 'hyoki' => "$_=$request->{$_}",
                                     ($request->{$_} =~ /\A-?\d+\z/ ? ('info' => 'integer') : ()) } }
                             sort(keys(%{$request})) ]);
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
