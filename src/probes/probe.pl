#
# Author-side probe of a Perl plug-in for the QIRO Lumen debugger.
#
# It is not the bridge: it runs the plug-in a second time, after a run that failed or returned
# no candidate, to see what the faithful run cannot show. It loads the file as the bridge does
# (a compile error and a load error are told apart by the interpreter's message), calls the
# entry with the same request in the same list context, and prints one line "QIRO-PROBE:"
# followed by a JSON object: the compile and load results, whether the entry exists, what it
# died with or returned, and what the bridge's per-field rules keep of each candidate.
# Arguments: plug-in file, method, then the request values (URL-encoded UTF-8), in the
# bridge's order.
#

use strict;
use warnings;
use Encode;
use JSON::PP;
use File::Spec;

my $MARK = 'QIRO-PROBE:';
my @FIELDS = (['hyoki', 100], ['comment', 1024], ['comment_xhtml', 10240],
              ['alternative_type', -1], ['alternative_alias', -1], ['info', 64],
              ['alternative', 512]);
my $CANDIDATE_LIMIT = 100;

sub url_decode {
    my ($string) = @_;
    $string =~ tr/+/ /;
    $string =~ s/%([0-9A-Fa-f]{2})/chr(hex($1))/eg;
    return $string;
}

sub decode_argument { return Encode::decode_utf8(url_decode($_[0])); }

open(my $real_stdout, '>&', \*STDOUT) or die "no standard output: $!";

sub emit {
    my ($report) = @_;
    print {$real_stdout} "\n" . $MARK . JSON::PP->new->ascii->canonical->encode($report) . "\n";
    close($real_stdout);
    POSIX::_exit(0);
}

my $plugin_file = File::Spec->rel2abs(url_decode($ARGV[0]));
my $method = decode_argument($ARGV[1]);
my %report = (language => 'perl', method => $method);

# The innermost place in the plug-in's own file that a message names.
sub failure {
    my ($error) = @_;
    my $message = ref($error) ? "$error" : $error;
    $message = Encode::decode_utf8($message) unless Encode::is_utf8($message);
    my ($file, $line);
    while ($message =~ /at (.+?) line (\d+)/g) {
        if (File::Spec->rel2abs($1) eq $plugin_file && !defined($line)) {
            ($file, $line) = ($1, $2 + 0);
        }
    }
    $message =~ s/\s+\z//;
    return {ok => JSON::PP::false, message => $message, file => $file, line => $line};
}

# Where the last die came from in the plug-in's own file, for a message that names no place
# (one that ends in a newline). Kept with the message, so that a die caught inside the
# plug-in does not lend its place to a later one.
my ($die_message, $die_line);
sub note_die {
    my ($error) = @_;
    for (my $depth = 0; my @frame = caller($depth); $depth++) {
        if (File::Spec->rel2abs($frame[1]) eq $plugin_file) {
            ($die_message, $die_line) = ($error, $frame[2] + 0);
            return;
        }
    }
    ($die_message, $die_line) = ($error, undef);
}

# The plug-in's own lines, for the declarations the bridge did not accept.
sub plugin_lines {
    open(my $source, '<', $plugin_file) or return ();
    my @lines = <$source>;
    close($source);
    chomp(@lines);
    s/\r\z// for @lines;
    return @lines;
}

# The first line that matches, as {line, found}, or undef.
sub find_line {
    my ($pattern) = @_;
    my @lines = plugin_lines();
    for my $index (0 .. $#lines) {
        if ($lines[$index] =~ $pattern) {
            my $text = $lines[$index];
            $text =~ s/^\s+|\s+\z//g;
            $text = Encode::decode_utf8($text) unless Encode::is_utf8($text);
            return {line => $index + 1, found => $text};
        }
    }
    return undef;
}

sub type_of {
    my ($value) = @_;
    return 'undef' unless defined($value);
    my $type = ref($value);
    return $type eq '' ? 'scalar' : $type . ' reference';
}

require POSIX;
open(STDOUT, '>&', \*STDERR) or die "cannot send the plug-in's output to standard error: $!";

# Read and compile as the bridge does; a message without a syntax complaint is a load error.
eval { require $plugin_file; };
if (my $error = $@) {
    my $result = failure($error);
    my $syntax = $error !~ /Can't locate |did not return a true value/ &&
        $error =~ /syntax error|Compilation failed|Global symbol|Missing right curly|Can't find string terminator|Unmatched right|Bareword .* not allowed|Illegal declaration/;
    if ($error =~ /did not return a true value/) {
        # The place Perl names is the require's, never in the plug-in: the last line is.
        my @lines = plugin_lines();
        my $last = scalar(@lines);
        $last-- while ($last > 1 && $lines[$last - 1] =~ /^\s*(#.*)?$/);
        $result = {ok => JSON::PP::false, type => 'no_true_value',
                   message => 'did not return a true value', file => $plugin_file,
                   line => $last || undef};
    } elsif ($error =~ /Can't locate .* in \@INC/ && $error =~ /BEGIN failed--compilation aborted/) {
        $result->{type} = 'use_missing';
        $result->{module} = $1 if ($error =~ /install the (\S+) module/);
    } elsif ($error =~ /Can't locate /) {
        $result->{type} = 'require_missing';
        $result->{module} = $1 if ($error =~ /install the (\S+) module/);
    }
    if ($syntax) {
        $report{compile} = $result;
    } else {
        $report{compile} = {ok => JSON::PP::true};
        $report{load} = $result;
    }
    emit(\%report);
}
$report{compile} = {ok => JSON::PP::true};
$report{load} = {ok => JSON::PP::true};

my $entry = Qiro_plugin->can($method);
$report{entry} = {name => $method, found => ($entry ? JSON::PP::true : JSON::PP::false),
                  module => (%Qiro_plugin:: ? JSON::PP::true : JSON::PP::false)};
unless ($entry) {
    # A package or a sub whose name differs only in case is the likely slip.
    my $package = find_line(qr/^\s*package\s+(?!Qiro_plugin\b)(?i:qiro_plugin)\s*[;{]/);
    my $sub = find_line(qr/^\s*sub\s+(?!\Q$method\E\b)(?i:\Q$method\E)\b/);
    my $declared = $package || $sub;
    $report{entry}{shape} = {kind => 'name_case', %{$declared}} if $declared;
    emit(\%report);
}

my @values = @ARGV[2 .. $#ARGV];
my %request;
if ($method eq 'run_preference') {
    %request = (path => decode_argument($values[0]));
} else {
    my ($first, $second) = $method eq 'run_process' ? ('composition_string', 'reading_string')
                                                    : ('candidate_string', 'composition_string');
    %request = ($first => decode_argument($values[0]), $second => decode_argument($values[1]),
                proxy_name => decode_argument($values[2]), proxy_port => int(url_decode($values[3])),
                proxy_username => decode_argument($values[4]),
                proxy_password => decode_argument($values[5]));
    $request{path} = decode_argument($values[6]) if (scalar(@values) == 7);
}

# The bridge reads the result as a list of keys and values.
my @returned = eval {
    local $SIG{__DIE__} = \&note_die;
    $entry->(\%request);
};
if (my $error = $@) {
    $report{call} = failure($error);
    if (!defined($report{call}{line}) && defined($die_line) && defined($die_message)
        && $die_message eq $error) {
        ($report{call}{file}, $report{call}{line}) = ($plugin_file, $die_line);
    }
    if ($error =~ /^(Too (?:few|many) arguments for subroutine) .*\(got (\d+); expected (?:at (?:least|most) )?(\d+)\)/) {
        my $declaration = find_line(qr/^\s*sub\s+\Q$method\E\b/);
        $report{entry}{shape} = {kind => 'parameters', takes => $3 + 0, passes => $2 + 0,
                                 %{$declaration || {}}};
    }
    emit(\%report);
}
$report{call} = {ok => JSON::PP::true};
if ($method eq 'run_process') {
    my %shape = (keys => undef, candidate => undef, ok => JSON::PP::false);
    if (scalar(@returned) >= 2 && defined($returned[0]) && !ref($returned[0])
        && $returned[0] eq 'candidate'
        && !grep { ref($_) ne 'HASH' } @returned[1 .. $#returned]) {
        # An array in the list is flattened: its items follow the key instead of one reference.
        $shape{type} = 'list of ' . scalar(@returned) . ' values';
        $shape{flattened} = scalar(@returned) - 1;
        my $slip = find_line(qr/\bcandidate['"]?\s*(?:=>|,)\s*\@/);
        $shape{slip} = $slip if $slip;
        $report{returned} = \%shape;
        $report{candidates} = [];
        emit(\%report);
    }
    if (scalar(@returned) == 1 && !defined($returned[0])) {
        $shape{type} = 'undef';
    } elsif (scalar(@returned) == 0) {
        $shape{type} = 'empty list';
    } elsif (scalar(@returned) == 1 && ref($returned[0])) {
        $shape{type} = type_of($returned[0]);
        $shape{keys} = [grep { defined } (sort keys %{$returned[0]})[0 .. 19]]
            if ref($returned[0]) eq 'HASH';
    } elsif (scalar(@returned) % 2 == 1) {
        $shape{type} = 'list of ' . scalar(@returned) . ' values';
    } else {
        my %data = @returned;
        $shape{type} = 'hash';
        $shape{keys} = [grep { defined } (sort keys %data)[0 .. 19]];
        if (exists($data{candidate})) {
            $shape{candidate} = type_of($data{candidate});
            $shape{ok} = ref($data{candidate}) eq 'ARRAY' ? JSON::PP::true : JSON::PP::false;
            # A hash filled from a flat list before it was returned: the line tells.
            my $slip = ref($data{candidate}) eq 'HASH'
                && find_line(qr/\bcandidate['"]?\s*(?:=>|,)\s*\@/);
            if ($slip) {
                $shape{flattened} = scalar(@returned) - 1;
                $shape{slip} = $slip;
            }
        }
        my @findings;
        if (ref($data{candidate}) eq 'ARRAY') {
            my $index = 0;
            for my $item (@{$data{candidate}}) {
                if ($index >= $CANDIDATE_LIMIT) {
                    push(@findings, {index => $index, kept => JSON::PP::false, field => undef,
                                     reason => 'beyond_limit', limit => $CANDIDATE_LIMIT});
                    last;
                }
                if (ref($item) ne 'HASH') {
                    push(@findings, {index => $index, kept => JSON::PP::false, field => undef,
                                     reason => 'not_mapping', type => type_of($item)});
                    $index++;
                    next;
                }
                for my $rule (@FIELDS) {
                    my ($field, $limit) = @{$rule};
                    my $value = $item->{$field};
                    my $is_hyoki = $field eq 'hyoki';
                    if (!defined($value)) {
                        push(@findings, {index => $index, kept => JSON::PP::false, field => $field,
                                         reason => 'missing'}) if $is_hyoki;
                        next;
                    }
                    if (ref($value)) {
                        push(@findings, {index => $index, kept => JSON::PP::true, field => $field,
                                         reason => 'wrong_type', type => type_of($value)});
                        next;
                    }
                    my $text = Encode::is_utf8($value) ? $value : Encode::decode_utf8($value);
                    if ($is_hyoki && $text eq '') {
                        push(@findings, {index => $index, kept => JSON::PP::false, field => $field,
                                         reason => 'empty'});
                    } elsif ($limit != -1 && length($text) > $limit) {
                        my $dropped = $field eq 'alternative' && defined($item->{alternative_type})
                            && $item->{alternative_type} eq 'url_jump_string';
                        push(@findings, {index => $index, kept => JSON::PP::true, field => $field,
                                         reason => $dropped ? 'dropped_over_limit' : 'cut',
                                         length => length($text), limit => $limit});
                    }
                }
                $index++;
            }
        }
        $report{candidates} = \@findings;
    }
    $report{returned} = \%shape;
    $report{candidates} ||= [];
}
emit(\%report);
