# Does not compile.
module Qiro_plugin
  def run_process(request
    { "candidate" => [] }
  end
