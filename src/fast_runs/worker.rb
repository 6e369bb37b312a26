#! /usr/bin/ruby -Ku
# QIRO Lumen fork worker for Ruby plug-ins (soak's fast mode).
#
#   ruby worker.rb BRIDGE_FILE PLUGIN_ARGUMENT      (control: fd 3 in, fd 4 out)
#
# The first line carries the bridge's own options, so that text is read as the bridge reads it.
# Loads the bridge's functions (the part before its main sequence) and the plug-in once, then
# for each request forks a child that runs the bridge's main sequence with the request's
# arguments in ARGV, so that each input meets a fresh copy of the loaded plug-in. What the
# plug-in printed while it loaded is written again at the start of each child's outputs. The
# control lines are those of worker.py.

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

  while (line = control_in.gets)
    request = line.chomp.split("\t", -1)
    if request.length < 5 || request[0] != "run"
      worker_send(control_out, "error\tbad request")
      next
    end
    begin
      # Opened before the fork: the host holds the reading ends, so this never blocks.
      outputs = request[1, 2].map do |path|
        io = File.open(path, File::WRONLY | File::NONBLOCK)
        io.fcntl(Fcntl::F_SETFL, io.fcntl(Fcntl::F_GETFL) & ~File::NONBLOCK)
        io
      end
    rescue SystemCallError => error
      worker_send(control_out, "error\t#{error.message}")
      next
    end
    $stdout.flush
    $stderr.flush
    pid = Process.fork do
      Process.setpgid(0, 0)
      STDOUT.reopen(outputs[0])
      STDERR.reopen(outputs[1])
      (outputs + [control_in, control_out]).each(&:close)
      Dir.chdir(request[3])
      $0 = request[4]
      ARGV.replace(request[5..])
      begin
        eval(main_sequence, TOPLEVEL_BINDING, bridge_file, start + 1)
      rescue Exception => error
        # The backtrace ends where a separate run's would: in the bridge's main sequence.
        trace = error.backtrace
        error.set_backtrace(trace.reject { |frame| frame.start_with?(__FILE__) }) if trace
        raise error
      end
    end
    outputs.each(&:close)
    worker_send(control_out, "pid\t#{pid}")
    _, status = Process.wait2(pid)
    code = status.signaled? ? 128 + status.termsig : status.exitstatus
    worker_send(control_out, "exit\t#{pid}\t#{code}")
  end
end

require "fcntl"
worker_main
