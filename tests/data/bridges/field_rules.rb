# Returns a fixed candidate list for each group name given as the written form.

module Qiro_plugin
  GROUPS = {
    "title" => lambda {
      [
        { "hyoki" => "\u3042" * 120 },
        { "hyoki" => "a<b" },
        { "hyoki" => "x" * 99 + "&" },
        { "hyoki" => "y" * 100 + "<" },
        { "hyoki" => "&<>'\"&amp;" },
        { "hyoki" => "t\tl\nc\rz\x01\x1f\x7f\u0080\u00e9" },
        { "comment" => "no title" },
        { "hyoki" => "" },
        { "hyoki" => "\t" },
      ]
    },
    "comment" => lambda {
      [
        { "hyoki" => "both", "comment" => "plain", "comment_xhtml" => "<p>x</p>" },
        { "hyoki" => "a&b", "comment" => "x\\ny\tz\n" },
        { "hyoki" => "kept", "comment_xhtml" => "a\tb\nc\rd\x01e\\nf" },
        { "hyoki" => "cut", "comment" => "c" * 1030 },
        { "hyoki" => "cutx", "comment_xhtml" => "d" * 10250 },
        { "hyoki" => "none", "comment" => "", "comment_xhtml" => "" },
        { "hyoki" => "escaped", "comment" => "<b>&" },
      ]
    },
    "alternative" => lambda {
      [
        { "hyoki" => "u512", "alternative_type" => "url_jump_string", "alternative" => "h" * 512 },
        { "hyoki" => "u513", "alternative_type" => "url_jump_string", "alternative" => "h" * 513,
          "alternative_alias" => "alias", "info" => "info" },
        { "hyoki" => "d513", "alternative_type" => "definite_string", "alternative" => "d" * 513 },
        { "hyoki" => "raw", "alternative_type" => "url_jump_string",
          "alternative" => "e" * 510 + "&&" },
        { "hyoki" => "case", "alternative_type" => "URL_JUMP_STRING", "alternative" => "x",
          "alternative_alias" => "al", "info" => "in" },
        { "hyoki" => "notype", "alternative" => "x" },
        { "hyoki" => "tab", "alternative_type" => "definite_string", "alternative" => "a\tb\nc" },
        { "hyoki" => "tab alias", "alternative_type" => "definite_string",
          "alternative" => "a\tb\nc", "alternative_alias" => "x\ty" },
        { "hyoki" => "info", "info" => "i" * 70 },
        { "hyoki" => "info ctrl", "info" => "i\tj<" },
        { "hyoki" => "alias only", "alternative_alias" => "only" },
        { "hyoki" => "typectl", "alternative_type" => "definite_string\t", "alternative" => "x" },
      ]
    },
    "alias_limit" => lambda { [{ "hyoki" => "alias", "alternative_alias" => "a" * 120 }] },
    "wide_jump" => lambda {
      [
        { "hyoki" => "wide", "alternative_type" => "url_jump_string",
          "alternative" => "\u3042" * 512 },
        { "hyoki" => "wide513", "alternative_type" => "url_jump_string",
          "alternative" => "\u3042" * 513 },
      ]
    },
    "walk" => lambda {
      (0...150).map { |position| position == 2 ? { "info" => "no title" } : { "hyoki" => "c#{position}" } }
    },
    "late" => lambda { Array.new(100) { {} } + [{ "hyoki" => "late" }] },
    "late_shapes" => lambda { ["text"] * 100 + [{ "hyoki" => "late" }] },
    "shapes" => lambda {
      ["text", 5, nil, ["list"],
       { "hyoki" => "ok", "comment" => 5, "info" => ["x"], "alternative_type" => "definite_string",
         "alternative" => 7 },
       { "hyoki" => 7 }]
    },
    # Strings that are not tagged UTF-8 are read as UTF-8 text.
    "encodings" => lambda {
      [
        { "hyoki" => "\u3042".b },
        { "hyoki" => "\u3044".encode("Shift_JIS") },
        { "hyoki" => "a\xffb".b },
      ]
    },
  }

  def run_process(request)
    group = request["composition_string"]
    return { "candidate" => "x" } if group == "not_a_list"
    return "x" if group == "not_a_dict"
    return { "other" => [] } if group == "no_candidate"
    { "candidate" => GROUPS[group].call }
  end
end
