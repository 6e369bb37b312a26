# Its own helpers and constants carry names a bridge might use for its own; none may change
# what the bridge does, nor the bridge's change what these do.
METHOD_NAMES = [].freeze
XML_DECLARATION = "<wrong/>"
XHTML_START = "<wrong>"
XHTML_META = "<wrong/>"
CONTROL_ALL = /x/
CONTROL_EXCEPT_LINES = /x/

module Qiro_plugin
  def to_utf8_text(_a, _b); end
  def create_comment(_a); end
  def create_item(_a, _b); end
  def load_plugin(_a, _b); end
  def decode_argument(_a, _b); end

  def make_request(url) = "GET #{url}"

  def run_process(request)
    { "candidate" => [{ "hyoki" => make_request(request["composition_string"]),
                        "comment" => "x\\ny" }] }
  end
end
