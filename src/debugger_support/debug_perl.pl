# Loaded through PERL5DB in place of the debugger's usual start, in the one command of a plug-in
# run that is debugged (PERL5OPT=-d). The debugger talks over the connection that PERLDB_OPTS
# names (RemotePort), which the tool listens for and relays to the author. Its first stop would
# be the bridge's first line; the author's first stop is the entry's first line instead.

my $qiro_lumen_entry = delete $ENV{'QIRO_LUMEN_DEBUG_PERL'};
my $qiro_lumen_options = $ENV{'PERLDB_OPTS'};

require 'perl5db.pl';

# The plug-in's own commands start without the debugger.
foreach my $name ('PERL5DB', 'PERLDB_OPTS') {
    delete $ENV{$name};
}
if (exists $ENV{'QIRO_LUMEN_DEBUG_PERL5OPT'}) {
    $ENV{'PERL5OPT'} = delete $ENV{'QIRO_LUMEN_DEBUG_PERL5OPT'};
} else {
    delete $ENV{'PERL5OPT'};
}
if (defined $qiro_lumen_entry && $qiro_lumen_entry =~ /\A[A-Za-z_]+\z/) {
    push @DB::typeahead, 'b Qiro_plugin::' . $qiro_lumen_entry, 'c';
}

1;
