module Qiro_plugin
  def run_process(request)
    $stdout.write("x\n" * (6 * 1024 * 1024))
    { "candidate" => [{ "hyoki" => "x" }] }
  end
end
