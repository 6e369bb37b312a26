# Fixture: prints to standard output itself, which corrupts the result document.
module Qiro_plugin
  def run_process(request)
    puts 'debug: got ' + request['composition_string']
    { 'candidate' => [{ 'hyoki' => 'x' }] }
  end
end
