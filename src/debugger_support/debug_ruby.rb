# Written as qiro_lumen_debug.rb into a private folder on RUBYLIB and loaded through RUBYOPT
# (-rqiro_lumen_debug) into the one command of a plug-in run that is debugged, before the
# bridge runs. QIRO_LUMEN_DEBUG_RUBY holds "dap PORT": the debug library listens on
# 127.0.0.1:PORT, and the bridge waits until an editor has attached and set its breakpoints.
# The debug library would stop at the bridge's first line, and again on attach; an author would
# have to get past both by hand, so neither stop is made: the first stop is a breakpoint.

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

  def self.open(port)
    # The library's notes ("Debugger can attach via ...", "Connected.") would land among the
    # plug-in's own error output.
    ENV["RUBY_DEBUG_LOG_LEVEL"] = "ERROR"
    require "debug/session"
    require "debug/server_dap"
    ENV.delete("RUBY_DEBUG_LOG_LEVEL")
    DEBUGGER__::UI_DAP.prepend(Without_first_stops)
    DEBUGGER__.open_tcp(host: "127.0.0.1", port: port, nonstop: true)
    CONFIGURED.pop
  end
end

Qiro_lumen_debug.then do |helper|
  mode, port = helper.forget_self.to_s.split(" ", 2)
  helper.open(Integer(port)) if mode == "dap"
end
