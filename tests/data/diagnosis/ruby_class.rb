class Qiro_plugin
  def run_process(request)
    { "candidate" => [{ "hyoki" => request["composition_string"] }] }
  end
end
