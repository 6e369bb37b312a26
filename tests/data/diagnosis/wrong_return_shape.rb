module Qiro_plugin
  def run_process(request)
    { "candidates" => [{ "hyoki" => "x" }] }
  end
end
