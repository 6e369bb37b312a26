# Author-side probe of a Ruby plug-in for the QIRO Lumen debugger.
#
# It is not the bridge: it runs the plug-in a second time, after a run that failed or returned
# no candidate, to see what the faithful run cannot show. It compiles the file, loads it as
# the bridge does, calls the entry with the same request, and prints one line
# "QIRO-PROBE:" followed by a JSON object: the compile and load results, whether the entry
# exists, what it raised or returned, and what the bridge's per-field rules keep of each
# candidate. Arguments: plug-in file, method, then the request values (URL-encoded UTF-8,
# the port as digits), in the bridge's order.

require 'cgi'
require 'json'

MARK = "QIRO-PROBE:"
FIELDS = [["hyoki", 100], ["comment", 1024], ["comment_xhtml", 10240],
          ["alternative_type", -1], ["alternative_alias", 100], ["info", 64],
          ["alternative", 512]]
CANDIDATE_LIMIT = 100

$real_stdout = STDOUT.dup

def emit(report)
  $real_stdout.write("\n" + MARK + JSON.generate(report) + "\n")
  $real_stdout.flush
  exit!(0)
end

def text(value)
  value.to_s.dup.force_encoding(Encoding::UTF_8).scrub
end

# The innermost frame in the plug-in's own file, where the author has to look.
def failure(error, plugin_file)
  where = { "file" => nil, "line" => nil }
  (error.backtrace_locations || []).each do |frame|
    path = frame.absolute_path || frame.path
    if path && File.expand_path(path) == plugin_file
      where = { "file" => path, "line" => frame.lineno }
      break
    end
  end
  { "ok" => false, "type" => error.class.name,
    "message" => text("#{error.message} (#{error.class.name})") }.merge(where)
end

def shape(value)
  result = { "type" => value.class.name, "keys" => nil, "candidate" => nil, "ok" => false }
  if value.is_a?(Hash)
    result["keys"] = value.keys.first(20).map { |key| text(key.inspect) }
    if value.key?("candidate")
      result["candidate"] = value["candidate"].class.name
      result["ok"] = value["candidate"].is_a?(Array)
    end
  end
  result
end

def check_candidates(value)
  findings = []
  return findings unless value.is_a?(Hash) && value["candidate"].is_a?(Array)
  value["candidate"].each_with_index do |item, index|
    if index >= CANDIDATE_LIMIT
      findings << { "index" => index, "kept" => false, "field" => nil,
                    "reason" => "beyond_limit", "limit" => CANDIDATE_LIMIT }
      break
    end
    unless item.is_a?(Hash)
      findings << { "index" => index, "kept" => false, "field" => nil,
                    "reason" => "not_mapping", "type" => item.class.name }
      next
    end
    FIELDS.each do |field, limit|
      unless item.key?(field)
        if field == "hyoki"
          findings << { "index" => index, "kept" => false, "field" => field,
                        "reason" => (item.key?(field.to_sym) ? "symbol_key" : "missing") }
        end
        next
      end
      value_text = item[field]
      if !value_text.is_a?(String)
        findings << { "index" => index, "kept" => field != "hyoki", "field" => field,
                      "reason" => "wrong_type", "type" => value_text.class.name }
      elsif field == "hyoki" && value_text.empty?
        findings << { "index" => index, "kept" => false, "field" => field, "reason" => "empty" }
      elsif limit != -1 && text(value_text).length > limit
        dropped = field == "alternative" && item["alternative_type"] == "url_jump_string"
        findings << { "index" => index, "kept" => true, "field" => field,
                      "reason" => dropped ? "dropped_over_limit" : "cut",
                      "length" => text(value_text).length, "limit" => limit }
      end
    end
  end
  findings
end

def make_request(method_name, values)
  return { "path" => CGI.unescape(values[0]) } if method_name == "run_preference"
  first, second = method_name == "run_process" ? ["composition_string", "reading_string"] :
                    ["candidate_string", "composition_string"]
  request = { first => CGI.unescape(values[0]), second => CGI.unescape(values[1]),
              "proxy_name" => CGI.unescape(values[2]), "proxy_port" => CGI.unescape(values[3]).to_i,
              "proxy_username" => CGI.unescape(values[4]),
              "proxy_password" => CGI.unescape(values[5]) }
  request["path"] = CGI.unescape(values[6]) if values.length == 7
  request
end

plugin_file = File.expand_path(CGI.unescape(ARGV[0]))
method_name = CGI.unescape(ARGV[1])
report = { "language" => "ruby", "method" => method_name }

begin
  RubyVM::InstructionSequence.compile_file(plugin_file)
  report["compile"] = { "ok" => true }
rescue SyntaxError => error
  message = text(error.message)
  line = message[/:(\d+):/, 1]
  report["compile"] = { "ok" => false, "type" => error.class.name,
                        "message" => message.lines.first(6).join.strip,
                        "file" => plugin_file, "line" => line && line.to_i }
  emit(report)
rescue SystemCallError, IOError => error
  report["compile"] = { "ok" => false, "type" => error.class.name, "message" => text(error.message),
                        "file" => nil, "line" => nil }
  emit(report)
end

# Whatever the plug-in prints goes to standard error, so the report line stays whole.
$stdout = $stderr
STDOUT.reopen(STDERR)
begin
  File.extname(plugin_file) == ".rb" ? require(plugin_file) : load(plugin_file)
  report["load"] = { "ok" => true }
rescue Exception => error
  report["load"] = failure(error, plugin_file)
  # A file of the author's own, named relative to the plug-in, is not a library to install.
  if error.is_a?(LoadError) && (error.backtrace || []).first.to_s.include?("require_relative")
    report["load"]["type"] = "require_relative"
  end
  emit(report)
end

# The plug-in's line, stripped, with its number: what the author declared.
def declared(file, line)
  return nil unless file && line
  text = File.readlines(file, encoding: "UTF-8")[line - 1].to_s
  { "line" => line, "found" => text(text).strip }
rescue SystemCallError, IOError
  nil
end

# Which declaration the bridge refuses, when the file declares the entry in a form it cannot use.
def entry_shape(method_name)
  unless Object.const_defined?(:Qiro_plugin)
    name = Object.constants.find { |constant| constant.to_s.downcase == "qiro_plugin" }
    return nil unless name
    place = declared(*Object.const_source_location(name))
    return place && { "kind" => "name_case" }.merge(place)
  end
  if Qiro_plugin.is_a?(Class)
    place = declared(*Object.const_source_location(:Qiro_plugin))
    return { "kind" => "class" }.merge(place || {})
  end
  methods = Qiro_plugin.instance_methods + Qiro_plugin.private_instance_methods
  unless methods.include?(method_name.to_sym)
    other = methods.find { |name| name.to_s.downcase == method_name.downcase }
    place = other && declared(*Qiro_plugin.instance_method(other).source_location)
    return place && { "kind" => "name_case" }.merge(place)
  end
  entry = Qiro_plugin.instance_method(method_name)
  required = entry.arity.negative? ? -entry.arity - 1 : entry.arity
  return nil if entry.arity == 1 || (entry.arity.negative? && required <= 1)
  { "kind" => "parameters", "takes" => required, "passes" => 1 }
    .merge(declared(*entry.source_location) || {})
end

module_found = Object.const_defined?(:Qiro_plugin)
found = module_found && Qiro_plugin.instance_of?(Module) &&
        (Qiro_plugin.instance_methods + Qiro_plugin.private_instance_methods).include?(method_name.to_sym)
report["entry"] = { "name" => method_name, "found" => found, "module" => module_found }
shape = entry_shape(method_name)
report["entry"]["shape"] = shape if shape
emit(report) if !found || shape

include Qiro_plugin
begin
  value = method(method_name).call(make_request(method_name, ARGV[2..]))
  report["call"] = { "ok" => true }
rescue Exception => error
  report["call"] = failure(error, plugin_file)
  emit(report)
end
if method_name == "run_process"
  report["returned"] = shape(value)
  report["candidates"] = check_candidates(value)
end
emit(report)
