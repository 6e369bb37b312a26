module Qiro_plugin
  def run_process(request)
    puts "looking up #{request["composition_string"]}"
    { "candidate" => [{ "hyoki" => "x" }] }
  end
end
