module Qiro_plugin
  def run_process(request)
    raise ArgumentError, "no dictionary for " + request["composition_string"]
  end
end
