# Writes to standard output while it loads and while it runs.
print "[loading]"

module Qiro_plugin
  def run_process(request)
    puts "[running]"
    { "candidate" => [{ "hyoki" => "noise" }] }
  end

  def run_preference(request)
    print "[preference]"
  end

  def run_callback(request)
    print "[callback]"
  end
end
