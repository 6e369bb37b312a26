# A plug-in with a branch that no case takes: lines 8 and 9.

module Qiro_plugin
  def self.describe(text)
    if text.start_with?("a")
      kind = "starts with a"
    else
      kind = "other"
      kind += "!"
    end
    kind
  end

  def run_process(request)
    text = request["composition_string"]
    { "candidate" => [{ "hyoki" => text, "comment" => Qiro_plugin.describe(text) }] }
  end
  module_function :run_process
end
