#
# QIRO Lumen スクリプトプラグイン Perl ブリッジ
#
# 使い方:
#   perl bridge.pl プラグインファイル メソッド 引数...
# 引数はすべて URL エンコードされた UTF-8。
# プラグインをコンパイル時 (BEGIN) に読み込み、パッケージ Qiro_plugin の
# メソッドと同じ名前のサブルーチンに要求ハッシュへのリファレンスを渡す。
# run_process の場合は返されたハッシュの候補を itemlist 文書にして標準出力へ書く。
# ブリッジ自身のエラーは決まった文字列を改行なしで出力して正常終了する。
#

use strict;
use Encode;
use utf8;

# "+" を空白に、"%XX" をそのバイトに戻す。それ以外の "%" はそのまま残す。
sub url_decode {
    my ($string) = @_;
    $string =~ tr/+/ /;
    $string =~ s/%([0-9A-Fa-f]{2})/chr(hex($1))/eg;
    return $string;
}

# URL デコードしてから UTF-8 の文字列にする
sub decode_argument {
    my ($string) = @_;
    return Encode::decode_utf8(url_decode($string));
}

# 読み込みが必要なメソッドなら、本体より先にプラグインを読み込む
BEGIN {
    if (scalar(@ARGV) >= 2) {
        my $method = decode_argument($ARGV[1]);
        if ($method eq 'run_process' || $method eq 'run_preference' || $method eq 'run_callback') {
            # ファイル名はバイト列のまま使う
            my $plugin_file = url_decode($ARGV[0]);
            eval { require $plugin_file; };
            if ($@) {
                print STDERR $@;
                print 'error : plugin module load error.';
                exit(0);
            }
        }
    }
}

sub convert_string {
    my ($string, $ctrl, $size) = @_;
    return '' unless defined($string);
    # まだ文字列として読まれていない値は UTF-8 のバイト列とみなす
    $string = Encode::decode_utf8($string) unless Encode::is_utf8($string);
    # 文字数の制限はエスケープの前にかける
    if ($size != -1 && length($string) > $size) {
        $string = substr($string, 0, $size);
    }
    # "&" を最初に置き換えて、後で作った実体参照を二重にしない
    $string =~ s/&/&amp;/g;
    $string =~ s/</&lt;/g;
    $string =~ s/>/&gt;/g;
    $string =~ s/'/&apos;/g;
    $string =~ s/"/&quot;/g;
    if ($ctrl) {
        $string =~ s/[\x00-\x1F\x7F]/ /g;
    }
    else {
        $string =~ s/[\x00-\x08\x0B\x0C\x0E-\x1F\x7F]/ /g;
    }
    return $string;
}

sub create_comment {
    my ($hyoki, $comment, $comment_xhtml) = @_;
    return $comment_xhtml if ($comment_xhtml ne '');
    return '' if ($comment eq '');
    # 「\n」の 2 文字を改行タグにし、見出し付きの XHTML 文書に包む。
    # 文書全体をもう一度エスケープするので、本文は二重にエスケープされる。
    my $body = $comment;
    $body =~ s/\\n/<br \/>/g;
    my @parts = (
        '<?xml version="1.0" encoding="UTF-8" ?>',
        '<html xmlns="http://www.w3.org/1999/xhtml">',
        '<head>',
        '<meta http-equiv="Content-Type" content="text/html; charset=UTF-8" />',
        '</head>',
        '<body>',
        '<h2>', $hyoki, '</h2>',
        $body,
        '</body></html>',
    );
    return join('', map { convert_string($_, 1, -1) } @parts);
}

sub create_item {
    my ($item) = @_;
    my $hyoki = convert_string($item->{'hyoki'}, 1, 100);
    my $comment = convert_string($item->{'comment'}, 0, 1024);
    my $comment_xhtml = convert_string($item->{'comment_xhtml'}, 0, 1024 * 10);
    my $alternative_type = convert_string($item->{'alternative_type'}, 1, -1);
    my $alternative_alias = convert_string($item->{'alternative_alias'}, 1, -1);
    my $info = convert_string($item->{'info'}, 1, 64);
    # 別名がなければ代替文字列の改行も空白にする
    my $alternative = convert_string($item->{'alternative'}, ($alternative_alias eq '') ? 1 : 0, 512);

    # 長すぎるジャンプ先は切らずに捨てる (長さは受け取った値のまま数える)
    if ($alternative_type eq 'url_jump_string' && length($item->{'alternative'}) > 512) {
        $alternative = '';
    }

    return '' if ($hyoki eq '');

    my $xml = "\t<item type=\"script_candidate\">\n";
    $xml .= "\t\t<title>" . $hyoki . "</title>\n";
    $comment = create_comment($hyoki, $comment, $comment_xhtml);
    if ($comment ne '') {
        $xml .= "\t\t<comment>" . $comment . "</comment>\n";
    }
    if ($alternative ne ''
        && ($alternative_type eq 'definite_string' || $alternative_type eq 'url_jump_string')) {
        $xml .= "\t\t<alternative type=\"" . $alternative_type . "\">" . $alternative
            . "</alternative>\n";
    }
    if ($alternative_alias ne '') {
        $xml .= "\t\t<alternative_alias>" . $alternative_alias . "</alternative_alias>\n";
    }
    if ($info ne '') {
        $xml .= "\t\t<info>" . $info . "</info>\n";
    }
    $xml .= "\t</item>\n";
    return $xml;
}

sub create_xml {
    my ($data) = @_;
    my $xml = '<?xml version="1.0" encoding="UTF-8" ?>' . "\n\n<itemlist>\n";
    if (!defined($data) || !defined($data->{'candidate'})) {
        return $xml . "</itemlist>\n";
    }
    my $candidates = $data->{'candidate'};
    # 先頭の 100 個だけを見る (飛ばした要素も数える)
    for (my $position = 0; $position < scalar(@{$candidates}) && $position < 100; $position++) {
        $xml .= create_item($candidates->[$position]);
    }
    return $xml . "</itemlist>\n";
}

if (scalar(@ARGV) < 2) {
    print 'error : argument error.';
    exit(0);
}

my $plugin_file = url_decode($ARGV[0]);
my $method = decode_argument($ARGV[1]);

if ($method ne 'run_process' && $method ne 'syntax_check'
    && $method ne 'run_preference' && $method ne 'run_callback') {
    print 'error : plugin method load error.';
    exit(0);
}

if ($method eq 'syntax_check') {
    print 'syntax ok';
    exit(0);
}

my $entry = Qiro_plugin->can($method);
if (!$entry) {
    print 'error : plugin method [' . $method . '] not found.';
    exit(0);
}

# 処理とコールバックの要求: 位置 3 と 4 のキー名だけが違う
sub make_request {
    my ($first_key, $second_key) = @_;
    my %request = (
        $first_key => decode_argument($ARGV[2]),
        $second_key => decode_argument($ARGV[3]),
        'proxy_name' => decode_argument($ARGV[4]),
        'proxy_port' => int(url_decode($ARGV[5])),
        'proxy_username' => decode_argument($ARGV[6]),
        'proxy_password' => decode_argument($ARGV[7]),
    );
    $request{'path'} = decode_argument($ARGV[8]) if (scalar(@ARGV) == 9);
    return \%request;
}

if ($method eq 'run_process') {
    if (scalar(@ARGV) != 8 && scalar(@ARGV) != 9) {
        print 'error : run_process() argument error.';
        exit(0);
    }
    my %result = $entry->(make_request('composition_string', 'reading_string'));
    print Encode::encode_utf8(create_xml(\%result));
}
elsif ($method eq 'run_preference') {
    if (scalar(@ARGV) != 3) {
        print 'error : run_preference() argument error.';
        exit(0);
    }
    my %request = ('path' => decode_argument($ARGV[2]));
    $entry->(\%request);
}
elsif ($method eq 'run_callback') {
    if (scalar(@ARGV) != 8 && scalar(@ARGV) != 9) {
        print 'error : run_callback() argument error.';
        exit(0);
    }
    $entry->(make_request('candidate_string', 'composition_string'));
}
exit(0);
