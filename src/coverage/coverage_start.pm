# Written as Qiro_coverage.pm into a private folder; PERL5LIB names the folder and PERL5OPT
# loads it for one run of a plug-in's entry. Starts Devel::Cover on the plug-in file alone,
# statements and branches, writing its database into the folder QIRO_COVERAGE_DB names.
package Qiro_coverage;

my $plugin = delete $ENV{QIRO_COVERAGE_PLUGIN};
my $database = delete $ENV{QIRO_COVERAGE_DB};
# The plug-in sees the module search path it would see without this file.
my $folder = __FILE__;
$folder =~ s{/[^/]*\z}{};
@INC = grep { $_ ne $folder } @INC;
if (defined $plugin && defined $database) {
    my $name = $plugin;
    $name =~ s{.*/}{}s;
    require Devel::Cover;
    Devel::Cover->import('-db', $database, '-silent', 1, '-coverage', 'statement', 'branch',
        '+select', '(?:\A|/)' . quotemeta($name) . '\z', '+ignore', '.');
}

1;
