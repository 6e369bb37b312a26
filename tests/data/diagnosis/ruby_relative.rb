require_relative "qiro_helper_not_there"

module Qiro_plugin
  def run_process(request)
    { "candidate" => [] }
  end
end
