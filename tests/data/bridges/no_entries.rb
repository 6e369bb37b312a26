# Loads, but its module defines no entry.
module Qiro_plugin
end
