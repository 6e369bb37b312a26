# Prints what a Devel::Cover database holds, per file: "file PATH", then "statement LINE
# COUNT" per statement and "branch LINE BLOCK TRUE FALSE" per decision.
#   perl coverage_collect.pl DATABASE
use strict;
use warnings;
use Devel::Cover::DB;

my $db = Devel::Cover::DB->new(db => $ARGV[0]);
exit 0 unless $db->is_valid;
$db = $db->merge_runs;
my $cover = $db->cover;
for my $file ($cover->items) {
    my $data = $cover->file($file);
    (my $name = $file) =~ s/\n/ /g;
    print "file $name\n";
    if (my $statements = $data->statement) {
        for my $line (sort { $a <=> $b } $statements->items) {
            for my $statement (@{ $statements->location($line) }) {
                print "statement $line ", ($statement->covered || 0), "\n";
            }
        }
    }
    if (my $branches = $data->branch) {
        for my $line (sort { $a <=> $b } $branches->items) {
            my $block = 0;
            for my $branch (@{ $branches->location($line) }) {
                print "branch $line $block ", ($branch->value(0) || 0), ' ',
                    ($branch->value(1) || 0), "\n";
                $block++;
            }
        }
    }
}
