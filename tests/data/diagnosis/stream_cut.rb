module Qiro_plugin
  def run_process(request)
    $stdout.write("x" * (65 * 1024 * 1024))
    { "candidate" => [] }
  end
end
