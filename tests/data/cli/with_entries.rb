# Fixture: offers the callback and the preference entry (see with_entries.xml).
module Qiro_plugin
  def run_process(request)
    { 'candidate' => [{ 'hyoki' => request['composition_string'] }] }
  end

  def run_callback(request)
    puts "called back: #{request['candidate_string']} for #{request['composition_string']}"
  end

  def run_preference(request)
    $stderr.puts "settings folder: #{request['path']}"
  end
end
