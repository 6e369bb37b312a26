# Returns the written form with a call counter: a fresh process (or fork) always says 1.
$stderr.puts "echo_state loaded"
module Qiro_plugin
  @@calls = 0
  def run_process(request)
    @@calls += 1
    form = request["composition_string"]
    { "candidate" => [
      { "hyoki" => form, "comment" => "call #{@@calls}: #{form} / #{request["reading_string"]}",
        "info" => form.length.to_s },
      { "hyoki" => "#{form}##{@@calls}", "alternative_type" => "definite_string",
        "alternative" => form * 3, "alternative_alias" => form },
    ] }
  end
end
