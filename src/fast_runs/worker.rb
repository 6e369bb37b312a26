#! /usr/bin/ruby -Ku
# QIRO Lumen fork worker for Ruby plug-ins (soak's fast mode).
#
#   ruby worker.rb BRIDGE_FILE PLUGIN_ARGUMENT      (control: fd 3 in, fd 4 out)
#
# The first line carries the bridge's own options, so that text is read as the bridge reads it.
# Loads the bridge's functions (the part before its main sequence) and the plug-in once, then
# forks, ahead of each request, a child that takes the request from the host and runs the
# bridge's main sequence with the request's arguments in ARGV, so that each input meets a fresh
# copy of the loaded plug-in. What the plug-in printed while it loaded is written again at the
# start of each child's outputs. The control lines are those of worker.py; the worker reports
# each child's exit once it has reaped it.

MAIN_SEQUENCE_START = "if ARGV.length < 2"

def worker_send(control, line)
  control.write(line + "\n")
  control.flush
end

# The plug-in's outputs while it loads, kept in files of the worker's private folder (the
# bridge copy's; the host removes it).
def worker_capture_load(plugin_file, folder)
  $stdout.flush
  $stderr.flush
  saved = [STDOUT.dup, STDERR.dup]
  paths = [File.join(folder, "load.out"), File.join(folder, "load.err")]
  files = paths.map { |path| File.open(path, File::WRONLY | File::CREAT | File::EXCL, 0600) }
  begin
    STDOUT.reopen(files[0])
    STDERR.reopen(files[1])
    begin
      loaded = Qiro_lumen_bridge.load_plugin(plugin_file)
    ensure
      $stdout.flush
      $stderr.flush
      STDOUT.reopen(saved[0])
      STDERR.reopen(saved[1])
    end
    [loaded, paths.map { |path| File.binread(path) }]
  ensure
    (saved + files).each(&:close)
    paths.each { |path| File.unlink(path) if File.exist?(path) }
  end
end

def worker_main
  control_in = IO.new(3, "rb")
  control_out = IO.new(4, "wb")
  bridge_file = ARGV[0]
  plugin_argument = ARGV[1]
  source = File.binread(bridge_file).force_encoding(Encoding::UTF_8)
  lines = source.lines
  start = lines.index { |line| line.start_with?(MAIN_SEQUENCE_START) }
  if start.nil?
    worker_send(control_out, "fallback\tthe bridge has no main sequence to start")
    return
  end
  eval(lines[0...start].join, TOPLEVEL_BINDING, bridge_file, 1)
  main_sequence = lines[start..].join

  plugin_file = Qiro_lumen_bridge.decode_argument(plugin_argument)
  begin
    loaded, replay = worker_capture_load(plugin_file, File.dirname(bridge_file))
  rescue Exception => error
    worker_send(control_out, "fallback\tthe plug-in does not load: #{error.class}")
    return
  end
  unless loaded
    worker_send(control_out, "fallback\tthe plug-in does not load")
    return
  end
  if Thread.list.size > 1 || Dir.children("/proc/self/task").size > 1
    worker_send(control_out, "fallback\tthe plug-in starts threads while it loads")
    return
  end
  original_load = Qiro_lumen_bridge.method(:load_plugin)
  Qiro_lumen_bridge.define_singleton_method(:load_plugin) do |path|
    next original_load.call(path) unless path == plugin_file
    STDOUT.syswrite(replay[0]) unless replay[0].empty?
    STDERR.syswrite(replay[1]) unless replay[1].empty?
    loaded
  end
  worker_send(control_out, "ready")

  worker_serve(control_in, control_out, bridge_file, main_sequence, start)
end

# A child that waits for its request: its pid and the pipe on which it says it took one.
def worker_fork_child(control_in, control_out, bridge_file, main_sequence, start)
  answer_read, answer_write = IO.pipe
  $stdout.flush
  $stderr.flush
  pid = Process.fork do
    answer_read.close
    worker_take_request(control_in, control_out, answer_write)
    eval(main_sequence, TOPLEVEL_BINDING, bridge_file, start + 1)
  rescue Exception => error
    # The backtrace ends where a separate run's would: in the bridge's main sequence.
    trace = error.backtrace
    error.set_backtrace(trace.reject { |frame| frame.start_with?(__FILE__) }) if trace
    raise error
  end
  answer_write.close
  [pid, answer_read]
end

# In a waiting child: reads the next request from the host itself (the worker does not pass it
# on), and makes the child the request's run; ends the child when there is none.
def worker_take_request(control_in, control_out, answer)
  line = control_in.gets
  control_in.close
  exit!(0) if line.nil?
  request = line.chomp.split("\t", -1)
  if request.length < 5 || request[0] != "run"
    worker_refuse(control_out, answer, "bad request")
  end
  begin
    outputs = request[1, 2].map do |path|
      io = File.open(path, File::WRONLY | File::NONBLOCK)
      io.fcntl(Fcntl::F_SETFL, io.fcntl(Fcntl::F_GETFL) & ~File::NONBLOCK)
      io
    end
  rescue SystemCallError => error
    worker_refuse(control_out, answer, error.message)
  end
  # Its own group before the host learns of it, so that a time-out's kill reaches it; the
  # host, which waits for this line, hears of the child before the worker does.
  Process.setpgid(0, 0)
  worker_send(control_out, "pid\t#{Process.pid}")
  answer.write("ok\n")
  answer.close
  STDOUT.reopen(outputs[0])
  STDERR.reopen(outputs[1])
  (outputs + [control_out]).each(&:close)
  Dir.chdir(request[3])
  $0 = request[4]
  ARGV.replace(request[5..])
end

def worker_refuse(control_out, answer, reason)
  answer.write("error\n")
  worker_send(control_out, "error\t#{reason}")
  exit!(0)
end

# Each child takes the next request from the control input itself once the one before has taken
# its own, so the worker never reads it; the next child is forked while one runs.
def worker_serve(control_in, control_out, bridge_file, main_sequence, start)
  waiting = worker_fork_child(control_in, control_out, bridge_file, main_sequence, start)
  loop do
    pid, answer_read = waiting
    answer = answer_read.gets
    answer_read.close
    if answer == "ok\n"
      waiting = worker_fork_child(control_in, control_out, bridge_file, main_sequence, start)
      _, status = Process.wait2(pid)
      code = status.signaled? ? 128 + status.termsig : status.exitstatus
      worker_send(control_out, "exit\t#{pid}\t#{code}")
      next
    end
    Process.wait(pid)
    # The host closed the control input, or the child ended before it took a request.
    break unless answer == "error\n"
    waiting = worker_fork_child(control_in, control_out, bridge_file, main_sequence, start)
  end
end

require "fcntl"
worker_main
