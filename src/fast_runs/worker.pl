# QIRO Lumen fork worker for Perl plug-ins (soak's fast mode).
#
#   perl worker.pl BRIDGE_FILE PLUGIN_ARGUMENT      (control: fd 3 in, fd 4 out)
#
# Compiles the bridge's functions (the part before its main sequence) and requires the plug-in
# once, as the bridge's BEGIN block would, then forks, ahead of each request, a child that
# takes the request from the host and runs the bridge's main sequence with the request's
# arguments in @ARGV, so that each input meets a fresh copy of the loaded plug-in. What the
# plug-in printed while it loaded is written again at the start of each child's outputs. The
# control lines are those of worker.py; the worker reports each child's exit once it has
# reaped it.

use strict;
use utf8;
use Fcntl;
use POSIX ();

my $MAIN_SEQUENCE_START = 'if (scalar(@ARGV) < 2) {';

open(my $control_in, '<&=', 3) or die "worker: no control input: $!";
open(my $control_out, '>&=', 4) or die "worker: no control output: $!";
binmode($control_out);
$control_out->autoflush(1);

sub worker_send {
    my ($line) = @_;
    print {$control_out} $line . "\n";
}

sub worker_slurp {
    my ($path) = @_;
    open(my $handle, '<:raw', $path) or return '';
    local $/;
    my $text = <$handle>;
    close($handle);
    return defined($text) ? $text : '';
}

my ($bridge_file, $plugin_argument) = @ARGV;
my @lines = split(/(?<=\n)/, worker_slurp($bridge_file));
my $start;
for (my $index = 0; $index < scalar(@lines); $index++) {
    if (index($lines[$index], $MAIN_SEQUENCE_START) == 0) {
        $start = $index;
        last;
    }
}
if (!defined($start)) {
    worker_send("fallback\tthe bridge has no main sequence to start");
    exit(0);
}
my $functions = join('', @lines[0 .. $start - 1]);
my $main_sequence = join('', @lines[$start .. $#lines]);

# The bridge's BEGIN block loads nothing here (no arguments); the plug-in is required below.
{
    local @ARGV = ();
    my $compiled = eval("package main;\n#line 1 \"$bridge_file\"\n" . $functions . "\n1;");
    if (!$compiled) {
        worker_send("fallback\tthe bridge's functions do not compile");
        exit(0);
    }
}
my $main_code = eval("package main; use strict; use Encode; use utf8; sub {\n#line "
    . ($start + 1) . " \"$bridge_file\"\n" . $main_sequence . "\n}");
if (!$main_code) {
    worker_send("fallback\tthe bridge's main sequence does not compile");
    exit(0);
}

# The plug-in's outputs while it loads are kept, to be written again in every child, in files of
# the worker's private folder (the bridge copy's; the host removes it).
my $plugin_file = main::url_decode($plugin_argument);
my ($folder) = ($bridge_file =~ m{^(.*)/[^/]*$});
my @capture_paths = ("$folder/load.out", "$folder/load.err");
my @captured;
for my $path (@capture_paths) {
    sysopen(my $handle, $path, O_WRONLY | O_CREAT | O_EXCL, 0600) or die "worker: $path: $!";
    push(@captured, $handle);
}
STDOUT->flush();
STDERR->flush();
open(my $saved_out, '>&', \*STDOUT) or die;
open(my $saved_err, '>&', \*STDERR) or die;
open(STDOUT, '>&', $captured[0]) or die;
open(STDERR, '>&', $captured[1]) or die;
my $loaded = eval { require $plugin_file; 1; };
STDOUT->flush();
STDERR->flush();
open(STDOUT, '>&', $saved_out) or die;
open(STDERR, '>&', $saved_err) or die;
close($saved_out);
close($saved_err);
close($_) for (@captured);
my @replay = map { worker_slurp($_) } @capture_paths;
unlink(@capture_paths);
if (!$loaded) {
    worker_send("fallback\tthe plug-in does not load");
    exit(0);
}
opendir(my $tasks, '/proc/self/task');
my @threads = grep { !/^\./ } readdir($tasks);
closedir($tasks);
if (scalar(@threads) > 1 || exists($INC{'threads.pm'})) {
    worker_send("fallback\tthe plug-in starts threads while it loads");
    exit(0);
}
worker_send('ready');

sub worker_write_all {
    my ($fd, $data) = @_;
    while (length($data) > 0) {
        my $written = POSIX::write($fd, $data, length($data));
        return if (!defined($written));
        $data = substr($data, $written);
    }
}

sub run_child {
    my ($outputs, $folder, @arguments) = @_;
    POSIX::dup2(fileno($outputs->[0]), 1);
    POSIX::dup2(fileno($outputs->[1]), 2);
    close($_) for (@{$outputs});
    close($control_out);
    chdir($folder);
    $0 = shift(@arguments);
    @ARGV = @arguments;
    # The bridge's BEGIN block would have required the plug-in only for these methods.
    if (scalar(@ARGV) >= 2) {
        my $method = main::decode_argument($ARGV[1]);
        if ($method eq 'run_process' || $method eq 'run_preference'
            || $method eq 'run_callback') {
            worker_write_all(1, $replay[0]);
            worker_write_all(2, $replay[1]);
        }
    }
    # A die exits with errno when it is set, as at the start of a separate run it is not.
    $! = 0;
    $main_code->();
    exit(0);
}

sub refuse_request {
    my ($answer, $reason) = @_;
    worker_write_all(fileno($answer), "error\n");
    worker_send("error\t$reason");
    POSIX::_exit(0);
}

# In a waiting child: reads the next request from the host itself (the worker does not pass it
# on) and runs it; ends the child when there is none.
sub take_request {
    my ($answer) = @_;
    my $line = '';
    while (index($line, "\n") < 0) {
        my $count = sysread($control_in, my $chunk, 65536);
        last if (!$count);
        $line .= $chunk;
    }
    close($control_in);
    POSIX::_exit(0) if ($line eq '');
    chomp($line);
    my @request = split(/\t/, $line, -1);
    if (scalar(@request) < 5 || $request[0] ne 'run') {
        refuse_request($answer, 'bad request');
    }
    my @outputs;
    for my $path (@request[1, 2]) {
        # The host holds the reading ends, so this never blocks.
        my $handle;
        sysopen($handle, $path, O_WRONLY | O_NONBLOCK) or refuse_request($answer, "$!");
        my $flags = fcntl($handle, F_GETFL, 0);
        fcntl($handle, F_SETFL, $flags & ~O_NONBLOCK);
        push(@outputs, $handle);
    }
    # Its own group before the host learns of it, so that a time-out's kill reaches it; the
    # host, which waits for this line, hears of the child before the worker does.
    POSIX::setpgid(0, 0);
    worker_send("pid\t$$");
    worker_write_all(fileno($answer), "ok\n");
    close($answer);
    run_child(\@outputs, @request[3 .. $#request]);
}

# A child that waits for its request: its pid and the pipe on which it says it took one.
sub fork_child {
    pipe(my $answer_read, my $answer_write) or die "worker: no pipe: $!";
    STDOUT->flush();
    STDERR->flush();
    my $pid = fork();
    die "worker: fork failed: $!" if (!defined($pid));
    if ($pid == 0) {
        close($answer_read);
        take_request($answer_write);
    }
    close($answer_write);
    return ($pid, $answer_read);
}

# Each child takes the next request from the control input itself once the one before has taken
# its own, so the worker never reads it; the next child is forked while one runs.
my ($pid, $answer_read) = fork_child();
while (1) {
    my $answer = <$answer_read>;
    close($answer_read);
    if (defined($answer) && $answer eq "ok\n") {
        my $running = $pid;
        ($pid, $answer_read) = fork_child();
        waitpid($running, 0);
        my $status = $?;
        my $code = ($status & 127) ? 128 + ($status & 127) : ($status >> 8);
        worker_send("exit\t$running\t$code");
        next;
    }
    waitpid($pid, 0);
    # The host closed the control input, or the child ended before it took a request.
    last if (!defined($answer) || $answer ne "error\n");
    ($pid, $answer_read) = fork_child();
}
exit(0);
