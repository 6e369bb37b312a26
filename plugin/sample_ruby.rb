# coding: utf-8
#
# Sample QIRO Lumen plug-in in Ruby.
#
# For the written form it offers the form itself (with a link that looks it up
# in Wikipedia) and the form in corner brackets (with double brackets as the
# alternative to insert instead). Copy it and change run_process to start a
# plug-in of your own.

require 'erb'

module Qiro_plugin
  def character_kind(text)
    return 'ひらがな' if text =~ /\A\p{Hiragana}+\z/
    return 'カタカナ' if text =~ /\A[\p{Katakana}ー]+\z/
    return '漢字' if text =~ /\A\p{Han}+\z/
    return '半角英数' if text.ascii_only?
    '混在'
  end

  def run_process(request)
    hyoki = request['composition_string'].to_s
    reading = request['reading_string'].to_s
    return { 'candidate' => [] } if hyoki.empty?

    lookup = 'https://ja.wikipedia.org/wiki/' + ERB::Util.url_encode(hyoki)
    # A backslash followed by n in a plain comment becomes a line break.
    about = "Ruby のサンプルプラグインの候補です。\\n文字数: #{hyoki.length}"
    about += "\\n読み: #{reading}" unless reading.empty?
    {
      'candidate' => [
        {
          'hyoki' => hyoki,
          'comment' => about,
          'alternative_type' => 'url_jump_string',
          'alternative' => lookup,
          'alternative_alias' => 'Wikipedia で調べる',
          'info' => character_kind(hyoki)
        },
        {
          'hyoki' => "「#{hyoki}」",
          'comment' => "かぎ括弧で囲みました。\\n代替は二重かぎ括弧です。",
          'alternative_type' => 'definite_string',
          'alternative' => "『#{hyoki}』",
          'alternative_alias' => '二重かぎ括弧',
          'info' => '括弧付き'
        }
      ]
    }
  end

  def run_callback(request)
    # The callback's output is not read by the host; an author sees it in the panes.
    puts "committed: #{request['candidate_string']} (searched for #{request['composition_string']})"
  end
end
