# Offers two candidates, the first built from the written form.
package Qiro_plugin;
use strict;
use utf8;

sub run_process {
    my ($request) = @_;
    my %first = ('hyoki' => $request->{'composition_string'} . '候補',
        'comment_xhtml' => '<p>説明</p>', 'alternative_type' => 'definite_string',
        'alternative' => 'a<b', 'alternative_alias' => '別名', 'info' => '名詞');
    my %second = ('hyoki' => 'second', 'alternative_type' => 'url_jump_string',
        'alternative' => 'https://example.org/?q=1&r=2');
    return ('candidate' => [\%first, \%second]);
}

1;
