module Qiro_plugin
  def run_process(request)
    $stderr.puts "waiting for the server"
    $stderr.flush
    sleep 40
  end
end
