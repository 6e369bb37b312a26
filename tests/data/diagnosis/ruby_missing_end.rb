module Qiro_plugin
  def run_process(request)
    if request["composition_string"].empty?
      { "candidate" => [] }
    { "candidate" => [{ "hyoki" => request["composition_string"] }] }
  end
end
