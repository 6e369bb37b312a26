module Qiro_plugin
  def run_process(request)
    { "candidate" => [{ hyoki: "symbol key" }, { "hyoki" => 42 }] }
  end
end
