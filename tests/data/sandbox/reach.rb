# Fixture: tries what a confined plug-in must not do and says, one candidate per attempt, what
# worked. The written form is the port of a listener on 127.0.0.1.
require 'socket'

module Qiro_plugin
  def attempt(name)
    yield
    { 'hyoki' => name + ':ok' }
  rescue StandardError
    { 'hyoki' => name + ':denied' }
  end

  def write_and_remove(path)
    File.write(path, 'x')
    File.delete(path)
  end

  def run_process(request)
    home = ENV['HOME']
    port = request['composition_string'].to_i
    own = File.dirname(File.expand_path(__FILE__))
    { 'candidate' => [
      attempt('read') { File.read(home + '/secret.txt') },
      attempt('write') { write_and_remove(own + '/written.txt') },
      attempt('escape') { File.write(home + '/escaped.txt', 'x') },
      attempt('data') { write_and_remove('written.txt') },
      attempt('connect') { Socket.tcp('127.0.0.1', port, connect_timeout: 2).close }
    ] }
  end
end
