#!/usr/bin/env bash
# What the Perl bridge's last step costs on the largest document it can write (100 items, each
# with a 10,240-character XHTML comment of Japanese text): the run of the bridge against the
# bare interpreter, and, inside one Perl process, the check for characters UTF-8 cannot hold
# against the plain encoding. Prints medians in milliseconds.
# Usage: bench/perl_bridge_encode_bench.sh [BUILD_DIR] [RUNS]
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build_dir="$(cd "${1:-$root/build}" && pwd)"
runs="${2:-15}"
export PATH="/usr/bin:/bin"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

"$build_dir/bin/qiro-lumen" bridge perl > "$scratch/bridge.pl"
cat > "$scratch/largest.pl" <<'EOF'
package Qiro_plugin;
use utf8;
sub run_process {
    return ('candidate' => [ map { { 'hyoki' => "候補$_", 'comment_xhtml' => 'あ' x 10240 } } 1 .. 100 ]);
}
1;
EOF
plugin="$(printf '%s' "$scratch/largest.pl" | perl -pe 's/([^A-Za-z0-9])/sprintf("%%%02X", ord($1))/ge')"

median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
now() { date +%s%N; }
: > "$scratch/run" && : > "$scratch/floor"
for _ in $(seq "$runs"); do
    start=$(now)
    perl "$scratch/bridge.pl" "$plugin" run_process x "" "" 0 "" "" > "$scratch/out"
    echo $(( ($(now) - start) / 1000 )) >> "$scratch/run"
    start=$(now)
    perl -e 1
    echo $(( ($(now) - start) / 1000 )) >> "$scratch/floor"
done
echo "document: $(stat -c %s "$scratch/out") bytes"
echo "bridge run: $(median < "$scratch/run" | awk '{ printf "%.1f", $1 / 1000 }') ms;" \
     "perl -e 1: $(median < "$scratch/floor" | awk '{ printf "%.1f", $1 / 1000 }') ms"

# The same text as the document holds, in one process: encoding alone, encoding with the lead-
# byte check the bridge makes, and the character substitution it falls back on.
perl -MTime::HiRes=time -MEncode -e '
    use strict; use utf8;
    my $text = ("<comment>" . "あ" x 10240 . "</comment>") x 100;
    my %took; my @order = qw(encode check substitute);
    for (1 .. '"$runs"') {
        my $start = time; my $bytes = Encode::encode_utf8($text);
        push @{ $took{encode} }, time - $start;
        $start = time; $bytes = Encode::encode_utf8($text); my $odd = $bytes =~ /[\xED\xF4-\xFF]/;
        push @{ $took{check} }, time - $start;
        $start = time; my $copy = $text; $copy =~ s/[^\x{0}-\x{D7FF}\x{E000}-\x{10FFFF}]/?/g;
        $bytes = Encode::encode_utf8($copy);
        push @{ $took{substitute} }, time - $start;
    }
    for my $name (@order) {
        my @sorted = sort { $a <=> $b } @{ $took{$name} };
        printf "%s: %.1f ms\n", $name, 1000 * $sorted[$#sorted / 2];
    }'
