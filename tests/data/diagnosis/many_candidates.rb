module Qiro_plugin
  def run_process(request)
    count = Integer(ENV["QIRO_TEST_CANDIDATES"])
    { "candidate" => (0...count).map { |index| { "hyoki" => "c#{index}" } } }
  end
end
