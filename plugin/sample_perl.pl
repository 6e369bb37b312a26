# Sample QIRO Lumen plug-in in Perl.
#
# For the written form it offers the form itself (with a link that looks it up
# in Wikipedia) and the form in corner brackets (with double brackets as the
# alternative to insert instead). Copy it and change run_process to start a
# plug-in of your own.

package Qiro_plugin;

use strict;
use warnings;
use utf8;
use Encode ();

sub character_kind {
    my ($text) = @_;
    return 'ひらがな' if $text =~ /\A\p{Hiragana}+\z/;
    return 'カタカナ' if $text =~ /\A[\p{Katakana}ー]+\z/;
    return '漢字' if $text =~ /\A\p{Han}+\z/;
    return '半角英数' if $text =~ /\A[\x00-\x7F]+\z/;
    return '混在';
}

sub percent_encode {
    my ($text) = @_;
    my $bytes = Encode::encode('UTF-8', $text);
    $bytes =~ s/([^A-Za-z0-9\-_.~])/sprintf('%%%02X', ord $1)/ge;
    return $bytes;
}

sub run_process {
    # The request is the last argument whether the entry is called as a
    # function or as a class method.
    my $request = $_[-1];
    my $hyoki = defined $request->{composition_string} ? $request->{composition_string} : '';
    my $reading = defined $request->{reading_string} ? $request->{reading_string} : '';
    my @candidates;
    if ($hyoki ne '') {
        # A backslash followed by n in a plain comment becomes a line break.
        my $about = 'Perl のサンプルプラグインの候補です。\n文字数: ' . length($hyoki);
        $about .= '\n読み: ' . $reading if $reading ne '';
        push @candidates,
          {
            hyoki             => $hyoki,
            comment           => $about,
            alternative_type  => 'url_jump_string',
            alternative       => 'https://ja.wikipedia.org/wiki/' . percent_encode($hyoki),
            alternative_alias => 'Wikipedia で調べる',
            info              => character_kind($hyoki),
          },
          {
            hyoki             => "「$hyoki」",
            comment           => 'かぎ括弧で囲みました。\n代替は二重かぎ括弧です。',
            alternative_type  => 'definite_string',
            alternative       => "『$hyoki』",
            alternative_alias => '二重かぎ括弧',
            info              => '括弧付き',
          };
    }
    my %result = (candidate => \@candidates);
    return wantarray ? %result : \%result;
}

1;
