# Marks its loading and running, then returns the result spelled in JSON as the written form,
# or one candidate per request value.
require "json"

print "[loaded]"

module Qiro_plugin
  def describe(request)
    request.keys.sort.map { |key| "#{key}=#{request[key]}" }
  end

  def run_process(request)
    puts "[run]"
    text = request["composition_string"]
    return JSON.parse(text) if text.start_with?("{", "[")
    { "candidate" => request.keys.sort.map do |key|
      { "hyoki" => "#{key}=#{request[key]}" }.merge(request[key].is_a?(Integer) ? { "info" => "integer" } : {})
    end }
  end

  def run_preference(request)
    print "run_preference:" + describe(request).join(";")
  end

  def run_callback(request)
    print "run_callback:" + describe(request).join(";")
  end
end
