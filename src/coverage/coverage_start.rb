# Written as qiro_coverage.rb into a private folder; RUBYLIB names the folder and RUBYOPT
# requires it for one run of a plug-in's entry. Measures lines and branches with Ruby's
# Coverage module and writes those of the plug-in file when the interpreter exits.
require 'coverage'

module Qiro_coverage_start
  PLUGIN = ENV.delete("QIRO_COVERAGE_PLUGIN")
  OUTPUT = ENV.delete("QIRO_COVERAGE_OUTPUT")
  FOLDER = File.dirname(File.expand_path(__FILE__))
  # The plug-in sees the load path it would see without this file.
  $LOAD_PATH.delete_if { |entry| File.expand_path(entry) == FOLDER }

  def self.same_file?(one, two)
    File.realpath(one) == File.realpath(two)
  rescue SystemCallError
    false
  end

  def self.write(result)
    File.open(OUTPUT, "w") do |out|
      result.each do |file, data|
        next unless same_file?(file, PLUGIN)
        out.write("file #{file.gsub("\n", " ")}\n")
        out.write("lines #{data[:lines].map { |count| count.nil? ? '-' : count }.join(' ')}\n")
        (data[:branches] || {}).each do |(_, decision, line), targets|
          targets.each do |(_, target), count|
            out.write("branch #{decision} #{line} #{target} #{count}\n")
          end
        end
      end
    end
  end
end

if Qiro_coverage_start::PLUGIN && Qiro_coverage_start::OUTPUT
  Coverage.start(lines: true, branches: true)
  at_exit { Qiro_coverage_start.write(Coverage.result) }
end
