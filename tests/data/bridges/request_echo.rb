# Hands the request back: one candidate per key for run_process, a printed line otherwise.

module Qiro_plugin
  def describe(request)
    request.keys.sort.map { |key| "#{key}=#{request[key]}" }
  end

  def run_process(request)
    candidates = request.keys.sort.map do |key|
      candidate = { "hyoki" => "#{key}=#{request[key]}" }
      candidate["info"] = "integer" if request[key].is_a?(Integer)
      candidate
    end
    { "candidate" => candidates }
  end

  def run_preference(request)
    print "run_preference:" + describe(request).join(";")
  end

  def run_callback(request)
    print "run_callback:" + describe(request).join(";")
  end
end
