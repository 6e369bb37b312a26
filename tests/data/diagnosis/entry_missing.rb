def run_process(request)
  { "candidate" => [{ "hyoki" => "x" }] }
end
