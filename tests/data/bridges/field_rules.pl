# Returns a fixed candidate list for each group name given as the written form.
package Qiro_plugin;

use strict;
use utf8;
use Encode;

sub as_text {
    my ($string) = @_;
    utf8::upgrade($string);
    return $string;
}

my %groups = (
    'title' => sub {
        return [
            { 'hyoki' => "\x{3042}" x 120 },
            { 'hyoki' => 'a<b' },
            { 'hyoki' => ('x' x 99) . '&' },
            { 'hyoki' => ('y' x 100) . '<' },
            { 'hyoki' => "&<>'\"&amp;" },
            # Flagged as text, so that U+0080 and U+00E9 are not read as UTF-8 bytes.
            { 'hyoki' => as_text("t\tl\nc\rz\x01\x1f\x7f\x{80}\x{e9}") },
            { 'comment' => 'no title' },
            { 'hyoki' => '' },
            { 'hyoki' => "\t" },
        ];
    },
    'comment' => sub {
        return [
            { 'hyoki' => 'both', 'comment' => 'plain', 'comment_xhtml' => '<p>x</p>' },
            { 'hyoki' => 'a&b', 'comment' => "x\\ny\tz\n" },
            { 'hyoki' => 'kept', 'comment_xhtml' => "a\tb\nc\rd\x01e\\nf" },
            { 'hyoki' => 'cut', 'comment' => 'c' x 1030 },
            { 'hyoki' => 'cutx', 'comment_xhtml' => 'd' x 10250 },
            { 'hyoki' => 'none', 'comment' => '', 'comment_xhtml' => '' },
            { 'hyoki' => 'escaped', 'comment' => '<b>&' },
        ];
    },
    'alternative' => sub {
        return [
            { 'hyoki' => 'u512', 'alternative_type' => 'url_jump_string', 'alternative' => 'h' x 512 },
            { 'hyoki' => 'u513', 'alternative_type' => 'url_jump_string', 'alternative' => 'h' x 513,
              'alternative_alias' => 'alias', 'info' => 'info' },
            { 'hyoki' => 'd513', 'alternative_type' => 'definite_string', 'alternative' => 'd' x 513 },
            { 'hyoki' => 'raw', 'alternative_type' => 'url_jump_string',
              'alternative' => ('e' x 510) . '&&' },
            { 'hyoki' => 'case', 'alternative_type' => 'URL_JUMP_STRING', 'alternative' => 'x',
              'alternative_alias' => 'al', 'info' => 'in' },
            { 'hyoki' => 'notype', 'alternative' => 'x' },
            { 'hyoki' => 'tab', 'alternative_type' => 'definite_string', 'alternative' => "a\tb\nc" },
            { 'hyoki' => 'tab alias', 'alternative_type' => 'definite_string',
              'alternative' => "a\tb\nc", 'alternative_alias' => "x\ty" },
            { 'hyoki' => 'info', 'info' => 'i' x 70 },
            { 'hyoki' => 'info ctrl', 'info' => "i\tj<" },
            { 'hyoki' => 'alias only', 'alternative_alias' => 'only' },
            { 'hyoki' => 'typectl', 'alternative_type' => "definite_string\t", 'alternative' => 'x' },
        ];
    },
    'alias_limit' => sub { return [ { 'hyoki' => 'alias', 'alternative_alias' => 'a' x 120 } ]; },
    'wide_jump' => sub {
        return [
            { 'hyoki' => 'wide', 'alternative_type' => 'url_jump_string',
              'alternative' => "\x{3042}" x 512 },
            { 'hyoki' => 'wide513', 'alternative_type' => 'url_jump_string',
              'alternative' => "\x{3042}" x 513 },
        ];
    },
    'walk' => sub {
        return [ map { $_ == 2 ? { 'info' => 'no title' } : { 'hyoki' => "c$_" } } (0 .. 149) ];
    },
    'late' => sub { return [ (map { {} } (1 .. 100)), { 'hyoki' => 'late' } ]; },
    # UTF-8 byte strings: read as text, but a jump target's length counts bytes.
    'byte_strings' => sub {
        return [
            { 'hyoki' => Encode::encode_utf8("\x{8868}\x{8a18}") },
            { 'hyoki' => 'bytes', 'alternative_type' => 'url_jump_string',
              'alternative' => Encode::encode_utf8("\x{3042}" x 200) },
            { 'hyoki' => 'bytes definite', 'alternative_type' => 'definite_string',
              'alternative' => Encode::encode_utf8("\x{3042}" x 200) },
        ];
    },
);

sub run_process {
    my ($request) = @_;
    my $group = $request->{'composition_string'};
    return () if ($group eq 'no_candidate');
    return ('candidate' => $groups{$group}->());
}

1;
