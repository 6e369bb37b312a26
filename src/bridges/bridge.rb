#! /usr/bin/ruby -Ku
#
# QIRO Lumen スクリプトプラグイン Ruby ブリッジ
#
# 使い方:
#   ruby bridge.rb プラグインファイル メソッド 引数...
# 引数はすべて URL エンコードされた UTF-8 (ポート番号だけは 10 進数のまま)。
# プラグインを読み込み、モジュール Qiro_plugin をトップレベルに取り込んで
# メソッドと同じ名前の関数を呼び出す。run_process の場合は返された候補を
# itemlist 文書にして標準出力へ書く。
# ブリッジ自身のエラーは決まった文字列を改行なしで出力して正常終了する。
# それ以外の失敗 (ファイルがない、例外など) はインタプリタのエラー出力に任せる。
#
# 1 行目だけは LF で終える: CR が付いていると、起動のたびに
# インタプリタが警告を標準エラーに出すため。

require 'cgi'

# ブリッジの補助関数と定数はこのモジュールの中に置く。トップレベルに置くと
# Object のメソッドや定数になり、プラグインが Qiro_plugin の中に同じ名前で
# 定義した関数より先に見つかったり、プラグインの定数で上書きされたりするため。
# トップレベルに残すのは convert_string と create_xml だけ。
module Qiro_lumen_bridge
  METHOD_NAMES = ["run_process", "syntax_check", "run_preference", "run_callback"]

  XML_DECLARATION = '<?xml version="1.0" encoding="UTF-8" ?>'
  XHTML_START = '<html xmlns="http://www.w3.org/1999/xhtml">'
  XHTML_META = '<meta http-equiv="Content-Type" content="text/html; charset=UTF-8" />'

  # 制御文字 (0x00-0x1F, 0x7F) と、タブ・LF・CR を除いた制御文字
  CONTROL_ALL = /[\x00-\x1f\x7f]/
  CONTROL_EXCEPT_LINES = /[\x00-\x08\x0b\x0c\x0e-\x1f\x7f]/

  module_function

  # 文字列を UTF-8 の文字の並びとして読む。
  # バイナリ (ASCII-8BIT) の文字列はそのバイトを UTF-8 とみなし、
  # 他の文字コードの文字列は UTF-8 に変換する。不正なバイトは置換文字になる。
  def to_utf8_text(string)
    encoding = string.encoding
    if encoding == Encoding::UTF_8 || encoding == Encoding::ASCII_8BIT ||
       encoding == Encoding::US_ASCII
      text = string.dup.force_encoding(Encoding::UTF_8)
    else
      text = string.encode(Encoding::UTF_8, invalid: :replace, undef: :replace)
    end
    text.valid_encoding? ? text : text.scrub
  end

  def create_comment(hyoki, comment, comment_xhtml)
    return comment_xhtml if comment_xhtml != ""
    return "" if comment == ""
    # 「\n」の 2 文字を改行タグにし、見出し付きの XHTML 文書に包む。
    # 文書全体をもう一度エスケープするので、本文は二重にエスケープされる。
    body = comment.gsub("\\n", "<br />")
    parts = [XML_DECLARATION, XHTML_START, "<head>", XHTML_META, "</head>", "<body>",
             "<h2>", hyoki, "</h2>", body, "</body></html>"]
    parts.map { |part| convert_string(part, true, -1) }.join
  end

  def create_item(item)
    hyoki = convert_string(item["hyoki"], true, 100)
    comment = convert_string(item["comment"], false, 1024)
    comment_xhtml = convert_string(item["comment_xhtml"], false, 1024 * 10)
    alternative_type = convert_string(item["alternative_type"], true, -1)
    alternative_alias = convert_string(item["alternative_alias"], true, 100)
    info = convert_string(item["info"], true, 64)
    # 別名がなければ代替文字列の改行も空白にする
    alternative = convert_string(item["alternative"], alternative_alias == "", 512)

    # 長すぎるジャンプ先は切らずに捨てる
    raw = item["alternative"]
    if alternative_type == "url_jump_string" && raw.is_a?(String) &&
       to_utf8_text(raw).length > 512
      alternative = ""
    end

    return "" if hyoki == ""

    xml = "\t<item type=\"script_candidate\">\n"
    xml << "\t\t<title>" << hyoki << "</title>\n"
    comment = create_comment(hyoki, comment, comment_xhtml)
    xml << "\t\t<comment>" << comment << "</comment>\n" if comment != ""
    if alternative != "" &&
       (alternative_type == "definite_string" || alternative_type == "url_jump_string")
      xml << "\t\t<alternative type=\"" << alternative_type << "\">" << alternative <<
        "</alternative>\n"
    end
    if alternative_alias != ""
      xml << "\t\t<alternative_alias>" << alternative_alias << "</alternative_alias>\n"
    end
    xml << "\t\t<info>" << info << "</info>\n" if info != ""
    xml << "\t</item>\n"
    xml
  end

  # require は拡張子 ".rb" のファイルしか探さないので、
  # 大文字の拡張子 (Sample.RB など) は load で読む。
  def load_plugin(plugin_file)
    return require(plugin_file) if File.extname(plugin_file) == ".rb"
    load(plugin_file)
  end

  def decode_argument(string)
    CGI.unescape(string)
  end

  # 処理とコールバックの要求: 位置 3 と 4 のキー名だけが違う
  def make_request(first_key, second_key)
    request = {
      first_key => decode_argument(ARGV[2]),
      second_key => decode_argument(ARGV[3]),
      "proxy_name" => decode_argument(ARGV[4]),
      "proxy_port" => ARGV[5].to_i,
      "proxy_username" => decode_argument(ARGV[6]),
      "proxy_password" => decode_argument(ARGV[7]),
    }
    request["path"] = decode_argument(ARGV[8]) if ARGV.length == 9
    request
  end
end

def convert_string(string, ctrl, size)
  # 文字列でない値 (キーがない場合の nil も) は空として扱う
  return "" unless string.is_a?(String)
  string = Qiro_lumen_bridge.to_utf8_text(string)
  # 文字数の制限はエスケープの前にかける
  string = string[0, size] if size != -1 && string.length > size
  # "&" を最初に置き換えて、後で作った実体参照を二重にしない
  string = string.gsub("&", "&amp;")
  string = string.gsub("<", "&lt;")
  string = string.gsub(">", "&gt;")
  string = string.gsub("'", "&apos;")
  string = string.gsub('"', "&quot;")
  if ctrl
    string.gsub(Qiro_lumen_bridge::CONTROL_ALL, " ")
  else
    string.gsub(Qiro_lumen_bridge::CONTROL_EXCEPT_LINES, " ")
  end
end

def create_xml(data)
  xml = Qiro_lumen_bridge::XML_DECLARATION + "\n\n<itemlist>\n"
  return xml + "</itemlist>\n" unless data.is_a?(Hash)
  candidates = data["candidate"]
  return xml + "</itemlist>\n" unless candidates.is_a?(Array)
  # 先頭の 100 個だけを見る (飛ばした要素も数える)
  candidates.each_with_index do |item, position|
    break if position >= 100
    next unless item.is_a?(Hash)
    xml << Qiro_lumen_bridge.create_item(item)
  end
  xml + "</itemlist>\n"
end

if ARGV.length < 2
  print "error : argument error."
  exit
end

plugin_file = Qiro_lumen_bridge.decode_argument(ARGV[0])
method_name = Qiro_lumen_bridge.decode_argument(ARGV[1])

unless Qiro_lumen_bridge::METHOD_NAMES.include?(method_name)
  print "error : plugin method load error."
  exit
end

if method_name == "syntax_check"
  print "syntax ok"
  exit
end

unless Qiro_lumen_bridge.load_plugin(plugin_file)
  print "error : plugin module load error."
  exit
end

include Qiro_plugin
entry = method(method_name)

# ここから先は出力と終了を Kernel から直接呼ぶ: 取り込んだモジュールに
# print や exit という名前の関数があっても、そちらが呼ばれないように。

case method_name
when "run_process"
  if ARGV.length != 8 && ARGV.length != 9
    $stdout.print "error : run_process() argument error."
    Kernel.exit
  end
  $stdout.print create_xml(entry.call(Qiro_lumen_bridge.make_request("composition_string", "reading_string")))
when "run_preference"
  if ARGV.length != 3
    $stdout.print "error : run_preference() argument error."
    Kernel.exit
  end
  entry.call({ "path" => Qiro_lumen_bridge.decode_argument(ARGV[2]) })
when "run_callback"
  if ARGV.length != 8 && ARGV.length != 9
    $stdout.print "error : run_callback() argument error."
    Kernel.exit
  end
  entry.call(Qiro_lumen_bridge.make_request("candidate_string", "composition_string"))
end
