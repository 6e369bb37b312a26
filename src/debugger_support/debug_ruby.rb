# Written as qiro_lumen_debug.rb into a private folder on RUBYLIB and loaded through RUBYOPT
# (-rqiro_lumen_debug) into the one command of a plug-in run that is debugged, before the
# bridge runs. QIRO_LUMEN_DEBUG_RUBY holds "dap PORT" (the debug library listens on
# 127.0.0.1:PORT, and the bridge waits until an editor has attached and set its breakpoints) or
# "console PORT PLUGIN" (the library's console talks over a connection to 127.0.0.1:PORT, which
# the tool relays to the terminal). The debug library would stop at the bridge's first line, and
# again on attach; an author would have to get past both by hand, so neither stop is made: the
# first stop is a breakpoint, or for the console the plug-in's first line.

module Qiro_lumen_debug
  def self.forget_self
    trigger = ENV.delete("QIRO_LUMEN_DEBUG_RUBY")
    ["RUBYOPT", "RUBYLIB"].each do |name|
      original = ENV.delete("QIRO_LUMEN_DEBUG_" + name)
      if original.nil?
        ENV.delete(name)
      else
        ENV[name] = original
      end
    end
    folder = File.dirname(File.expand_path(__FILE__))
    $LOAD_PATH.delete_if { |entry| File.expand_path(entry) == folder }
    trigger
  end

  # Filled once the editor said configurationDone; the bridge waits for it.
  CONFIGURED = Queue.new

  # What the library would stop for before the first breakpoint: the connection itself, the
  # attach request and the end of the configuration.
  module Without_first_stops
    def pause
    end

    def recv_request
      while true
        request = super
        # The library listens before it names its session, which the requests use: on a busy
        # machine an editor's first requests can come before it.
        sleep 0.01 until defined?(DEBUGGER__::SESSION)
        return request unless request.is_a?(Hash) && request["type"] == "request"
        case request["command"]
        when "attach"
          send_response request
        when "configurationDone"
          send_response request
          Qiro_lumen_debug::CONFIGURED << true
        else
          return request
        end
      end
    end
  end

  # An editor that goes away closes the library's queue of commands, and the library would then
  # kill the plug-in, or fail on the queue it has already dropped if its own thread comes late.
  # Without an editor there is no one to stop for: the run goes on to its end.
  module Run_on_without_editor
    def readline(_prompt)
      queue = @q_msg
      (queue && queue.pop) || "continue"
    end
  end

  def self.open(port)
    # The library's notes ("Debugger can attach via ...", "Connected.") would land among the
    # plug-in's own error output.
    ENV["RUBY_DEBUG_LOG_LEVEL"] = "ERROR"
    require "debug/session"
    require "debug/server_dap"
    ENV.delete("RUBY_DEBUG_LOG_LEVEL")
    DEBUGGER__::UI_DAP.prepend(Without_first_stops, Run_on_without_editor)
    DEBUGGER__.open_tcp(host: "127.0.0.1", port: port, nonstop: true)
    CONFIGURED.pop
  end

  # The library's own console, reading and writing the relayed connection instead of the
  # command's standard streams, which belong to the bridge and its result document.
  def self.console_class
    Class.new(DEBUGGER__::UI_LocalConsole) do
      def initialize(connection)
        @connection = connection
      end

      # No SIGINT hook: an interrupt of the terminal reaches the tool, which ends the run.
      def activate(_session, on_fork: false)
      end

      def deactivate
      end

      def width
        80
      end

      def ask(prompt)
        @connection.write(prompt)
        (@connection.gets || "").strip
      end

      def puts(text = nil)
        lines = text.nil? ? [""] : Array(text).flat_map { |part| part.to_s.each_line.to_a }
        lines.each { |line| @connection.write(line.chomp, "\n") }
      end

      # The connection closes when the terminal does: the debugging ends and the run goes on.
      def readline(prompt = "(rdbg)")
        @connection.write(prompt.end_with?(" ") ? prompt : prompt + " ")
        line = @connection.gets
        return line.strip unless line.nil?
        DEBUGGER__::SESSION.delete_bp
        "continue"
      end
    end
  end

  def self.console(port, plugin)
    require "socket"
    require "debug/session"
    require "debug/local"
    connection = TCPSocket.new("127.0.0.1", port)
    connection.sync = true
    DEBUGGER__::CONFIG.set_config(no_color: true)
    DEBUGGER__.initialize_session(console_class.new(connection))
    # Line 0 is the first line the file runs; the stop waits until the bridge loads the plug-in.
    DEBUGGER__.add_line_breakpoint(File.realpath(plugin), 0, oneshot: true, hook_call: false)
  end
end

Qiro_lumen_debug.then do |helper|
  mode, rest = helper.forget_self.to_s.split(" ", 2)
  if mode == "dap"
    helper.open(Integer(rest))
  elsif mode == "console"
    port, plugin = rest.split(" ", 2)
    helper.console(Integer(port), plugin)
  end
end
