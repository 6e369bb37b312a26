require "qiro_no_such_gem"

module Qiro_plugin
  def run_process(request)
    { "candidate" => [] }
  end
end
