module Qiro_plugin
  def run_process(request)
    { "candidate" => [ }
  end
end
