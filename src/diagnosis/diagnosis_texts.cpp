#include "diagnosis/diagnosis_texts.hpp"

namespace qiro_plugin::diagnosis {

namespace {

struct entry {
    std::string_view key;
    std::string_view english;
    std::string_view japanese;
};

constexpr entry table[] = {
    {"no_language.extension", "{0} is not a plug-in file: its name must end in .py, .rb or .pl.",
     "{0} はプラグインファイルではありません。名前の末尾を .py、.rb、.pl "
     "のいずれかにしてください。"},
    {"no_language.missing", "{0} was not found.", "{0} が見つかりません。"},
    {"no_language.unreadable", "{0} cannot be read.", "{0} を読み込めません。"},
    {"no_language.hint", "Check the file's name, that it is there and that you may read it.",
     "ファイル名、ファイルがあること、読み込み権限があることを確かめてください。"},
    {"no_language.check", "The {0} syntax check of the bridge did not answer \"syntax ok\".",
     "ブリッジの {0} 文法チェックが「syntax ok」を返しませんでした。"},
    {"no_language.check_hint", "The standard-error pane says what the interpreter met.",
     "インタプリタが何に出会ったかは標準エラーの欄に出ています。"},
    {"interpreter_missing", "The interpreter \"{0}\" is not installed or not on PATH.",
     "インタプリタ「{0}」がインストールされていないか、PATH にありません。"},
    {"interpreter_missing.hint", "Install the Debian package {0}: sudo apt-get install {0}",
     "Debian パッケージ {0} をインストールしてください: sudo apt-get install {0}"},
    {"syntax_error.hint",
     "The plug-in does not compile. The bridge's syntax check never loads the plug-in, so "
     "\"syntax ok\" says nothing about the file.",
     "プラグインがコンパイルできません。ブリッジの文法チェックはプラグインを読み込まないので、"
     "「syntax ok」はこのファイルについて何も保証しません。"},
    {"load_failed", "The plug-in compiles but does not load: {0}",
     "プラグインはコンパイルできますが、読み込めません: {0}"},
    {"load_failed.hint",
     "Code at the top of the file runs when it loads: the message says what it met there.",
     "ファイルの最上位のコードは読み込み時に実行されます。そこで何が起きたかはメッセージの"
     "とおりです。"},
    {"entry_missing", "The entry {0} is not where the bridge looks for it.",
     "エントリ {0} が、ブリッジが探す場所にありません。"},
    {"entry_missing.hint", "Define it as: {0}", "次のように定義してください: {0}"},
    {"plugin_exception", "The entry stopped with an error: {0}",
     "エントリがエラーで止まりました: {0}"},
    {"plugin_exception.hint", "The traceback, the plug-in's own frames first:\n{0}",
     "トレースバック（プラグイン自身のフレームが先）:\n{0}"},
    {"stray_output.one", "Line {0} of standard output came from the plug-in: \"{1}\"",
     "標準出力の {0} 行目はプラグインが出力したものです: 「{1}」"},
    {"stray_output.many", "Lines {0} to {1} of standard output came from the plug-in: \"{2}\"",
     "標準出力の {0} 行目から {1} 行目はプラグインが出力したものです: 「{2}」"},
    {"stray_output.hint",
     "What the plug-in prints lands in the result document and breaks it. Write debug output to "
     "standard error: {0}",
     "プラグインが出力したものは結果文書に混ざって文書を壊します。デバッグ出力は標準エラーへ"
     "書いてください: {0}"},
    {"document_invalid", "Standard output is not a result document: line {0}, column {1}: {2}",
     "標準出力が結果文書になっていません: {0} 行目 {1} 桁目: {2}"},
    {"document_invalid.empty", "The run printed no result document.",
     "実行は結果文書を出力しませんでした。"},
    {"document_invalid.hint",
     "The bridge writes the document after the entry returns; an entry that ends the interpreter "
     "(exit) or writes to standard output directly cuts it short.",
     "文書はエントリが戻ったあとにブリッジが書きます。インタプリタを終了させる（exit）"
     "エントリや、標準出力へ直接書くエントリは文書を途切れさせます。"},
    {"not_utf8", "The bytes on {0} are not valid UTF-8 from offset {1}: {2}",
     "{0} のバイト列が位置 {1} から UTF-8 として正しくありません: {2}"},
    {"not_utf8.hint",
     "Print UTF-8 only: text in Shift_JIS or EUC-JP must be converted before it is printed or "
     "returned.",
     "UTF-8 だけを出力してください。Shift_JIS や EUC-JP "
     "の文字列は出力する前、返す前に変換してください。"},
    {"not_utf8.surrogate.hint",
     "Likely a lone surrogate (U+D800 to U+DFFF) in a string the entry returned: half of a "
     "pair, from text cut between the two halves or from an escape such as \\ud800. The "
     "bridge writes it as these bytes and the input method refuses the whole document; keep "
     "both halves of a pair together or drop the character.",
     "エントリが返した文字列に、対になっていないサロゲート (U+D800 から U+DFFF) "
     "があるようです。ペアの途中で切った文字列や \\ud800 のようなエスケープから生じます。"
     "ブリッジはそれをこのバイト列のまま書き、入力メソッドは文書全体を受け付けません。"
     "ペアの両方をそろえるか、その文字を取り除いてください。"},
    {"not_utf8.above_unicode.hint",
     "Likely a code point past U+10FFFF in a string the entry returned (Perl lets \\x{110000} "
     "and above into a string). The bridge writes it as these bytes and the input method "
     "refuses the whole document; drop the character.",
     "エントリが返した文字列に U+10FFFF を超える符号位置があるようです (Perl では "
     "\\x{110000} 以上も文字列に入ります)。ブリッジはそれをこのバイト列のまま書き、"
     "入力メソッドは文書全体を受け付けません。その文字を取り除いてください。"},
    {"wrong_return_shape",
     "The entry returned {0}, not a mapping whose \"candidate\" holds a list.",
     "エントリが返したのは {0} で、「candidate」にリストを持つ対応表ではありません。"},
    {"wrong_return_shape.keys",
     "The entry returned {0} with the keys {1}; the bridge reads a mapping whose \"candidate\" "
     "holds a list.",
     "エントリが返したのはキー {1} を持つ {0} です。ブリッジが読むのは「candidate」にリストを持つ"
     "対応表です。"},
    {"wrong_return_shape.candidate", "The entry returned \"candidate\" as {0}, not a list.",
     "エントリが返した「candidate」は {0} で、リストではありません。"},
    {"wrong_return_shape.hint", "Return it as: {0}", "次の形で返してください: {0}"},
    {"candidate_dropped", "Candidate {0} is dropped: {1}.", "候補 {0} は捨てられます: {1}。"},
    {"candidate_dropped.field", "Candidate {0} loses {1}: {2}.", "候補 {0} の {1}: {2}。"},
    {"candidate_dropped.hint",
     "Each candidate is a mapping with a non-empty text \"hyoki\"; every field is a text within "
     "its limit (hyoki 100, comment 1024, alternative 512, info 64 characters).",
     "候補は空でない文字列「hyoki」を持つ対応表です。各フィールドは上限内の文字列にしてください"
     "（hyoki 100、comment 1024、alternative 512、info 64 文字）。"},
    {"reason.missing", "it has no \"hyoki\"", "「hyoki」がありません"},
    {"reason.symbol_key", "its \"hyoki\" key is a symbol, not a string",
     "「hyoki」のキーが文字列ではなくシンボルです"},
    {"reason.empty", "its \"hyoki\" is empty", "「hyoki」が空です"},
    {"reason.not_mapping", "it is {0}, not a mapping", "対応表ではなく {0} です"},
    {"reason.beyond_limit", "only the first {0} candidates are read",
     "読まれるのは先頭の {0} 個の候補だけです"},
    {"reason.wrong_type", "\"{1}\" is {0}, not a text", "「{1}」が文字列ではなく {0} です"},
    {"reason.cut", "{0} characters are cut to {1}", "{0} 文字が {1} 文字に切られます"},
    {"reason.dropped_over_limit", "a jump address of {0} characters is over {1} and dropped",
     "{0} 文字のジャンプ先は上限 {1} を超えるので捨てられます"},
    {"timed_out", "The run timed out after {0} s and was stopped.",
     "実行が {0} 秒でタイムアウトし、止められました。"},
    {"timed_out.hint",
     "The plug-in did not finish within 30 seconds (an endless loop, a network call without a "
     "time-out?).",
     "プラグインが 30 秒以内に終わりませんでした（無限ループ、タイムアウトのない通信など）。"},
    {"timed_out.stopped", "The run was stopped after {0} s.", "実行を {0} 秒で止めました。"},
    {"timed_out.partial", "Standard error until then:\n{0}", "それまでの標準エラー:\n{0}"},
    {"stream_cut", "{0} was cut at 64 MiB; the rest was dropped.",
     "{0} は 64 MiB で切られ、残りは捨てられました。"},
    {"output_too_large",
     "The result document is {0} bytes, over the reader's limit of "
     "10,485,760 bytes.",
     "結果文書が {0} バイトで、読み込みの上限 10,485,760 バイトを超えています。"},
    {"output_too_large.hint", "Return fewer or shorter candidates: only the first 100 are read.",
     "候補を減らすか短くしてください。読まれるのは先頭の 100 個だけです。"},
    {"companion_xml_invalid", "{0} does not parse: {1}", "{0} を解析できません: {1}"},
    {"companion_xml_invalid.hint",
     "The plug-in runs with defaults: its name is the file name, the callback and preference "
     "entries are off and no settings folder path is passed.",
     "プラグインは既定値で動きます。名前はファイル名になり、コールバックと設定のエントリは無効、"
     "設定フォルダのパスも渡されません。"},
    {"interpreter_slow",
     "The interpreter \"{0}\" ({1}) took {2} ms to start, {3} ms more than "
     "expected.",
     "インタプリタ「{0}」（{1}）の起動に {2} ミリ秒かかりました。想定より {3} "
     "ミリ秒長くかかっています。"},
    {"interpreter_slow.hint",
     "A version manager's shim on PATH slows every run; put the system's interpreter (/usr/bin) "
     "first on PATH.",
     "PATH 上のバージョン管理ツールのシムはすべての実行を遅くします。システムのインタプリタ"
     "（/usr/bin）を PATH の先頭に置いてください。"},
    {"stream.std_output", "standard output", "標準出力"},
    {"stream.std_error", "standard error", "標準エラー"},
    {"syntax_error.not_utf8.hint",
     "The file is not saved as UTF-8 (it holds bytes of another encoding, Shift_JIS or EUC-JP "
     "most likely). Save it as UTF-8 in the editor.",
     "ファイルが UTF-8 で保存されていません（Shift_JIS や EUC-JP など別の文字コードのバイトが"
     "あります）。エディタで UTF-8 として保存し直してください。"},
    {"syntax_error.ruby_end.hint",
     "Ruby reached the end of the file still inside a block: an if, unless, case, while, def, do, "
     "class or module opened earlier has no end.",
     "Ruby がブロックの中のままファイルの終わりに達しました。それより前に開いた if、unless、"
     "case、while、def、do、class、module のどれかに end がありません。"},
    {"syntax_error.ruby_end.guess", "By the indentation, the {0} on line {1}.",
     "字下げから見ると {1} 行目の {0} です。"},
    {"load_failed.no_true_value", "The plug-in file does not end in a true value.",
     "プラグインファイルが真の値で終わっていません。"},
    {"load_failed.no_true_value.hint",
     "Perl loads the file with require, which takes the value of its last statement as whether "
     "loading worked: end the file with a line 1;",
     "Perl は require でファイルを読み込み、最後の文の値で読み込めたかどうかを判断します。"
     "ファイルの最後に 1; の行を置いてください。"},
    {"load_failed.perl_use",
     "The plug-in does not compile: the module {0} that it uses is not "
     "installed.",
     "プラグインがコンパイルできません。use しているモジュール {0} がインストールされていません。"},
    {"load_failed.perl_require",
     "The plug-in compiles, but the module {0} that it requires is "
     "not installed.",
     "プラグインはコンパイルできますが、require しているモジュール {0} がインストールされて"
     "いません。"},
    {"load_failed.perl_module.hint",
     "use loads a module while the file compiles. Install {0} for this perl (the Debian package "
     "is usually {1}; or cpan {0}), or correct its name.",
     "use はファイルのコンパイル中にモジュールを読み込みます。この perl 用に {0} をインストール"
     "するか（Debian のパッケージは通常 {1}、または cpan {0}）、名前を直してください。"},
    {"load_failed.perl_beside.hint",
     "{0} lies beside the plug-in, but the plug-in's folder is not searched for modules: put "
     "use File::Basename; use lib dirname(__FILE__); before the use.",
     "{0} はプラグインの隣にありますが、プラグインのフォルダはモジュールの検索先ではありません。"
     "use の前に use File::Basename; use lib dirname(__FILE__); を置いてください。"},
    {"load_failed.own_file",
     "The plug-in's own file {0}, which it loads with require_relative, "
     "is not there.",
     "プラグインが require_relative で読み込む自分のファイル {0} がありません。"},
    {"load_failed.ruby_relative.hint",
     "require_relative names a file relative to the plug-in file's folder ({0}), not to the "
     "current folder: put {1} there or correct the name.",
     "require_relative のパスは現在のフォルダではなく、プラグインファイルのフォルダ（{0}）からの"
     "相対パスです。そこに {1} を置くか、名前を直してください。"},
    {"load_failed.library", "The plug-in does not load: the library {0} is not found.",
     "プラグインを読み込めません。ライブラリ {0} が見つかりません。"},
    {"load_failed.ruby_beside.hint",
     "{0}.rb lies beside the plug-in, but require searches Ruby's load path: load your own file "
     "with require_relative \"{0}\".",
     "{0}.rb はプラグインの隣にありますが、require は Ruby のロードパスを探します。自分のファイル"
     "は require_relative \"{0}\" で読み込んでください。"},
    {"load_failed.ruby_gem.hint",
     "Install it for this ruby (gem install {0}, or the Debian package ruby-{1}), or correct "
     "its name.",
     "この ruby 用にインストールするか（gem install {0}、または Debian パッケージ ruby-{1}）、"
     "名前を直してください。"},
    {"load_failed.python_beside.hint",
     "{0} lies beside the plug-in, but the plug-in's folder is not on the module path when the "
     "bridge loads it: add sys.path.insert(0, os.path.dirname(os.path.abspath(__file__))) "
     "before the import.",
     "{0} はプラグインの隣にありますが、ブリッジが読み込むときプラグインのフォルダはモジュール"
     "の検索パスにありません。import の前に sys.path.insert(0, "
     "os.path.dirname(os.path.abspath(__file__))) を置いてください。"},
    {"load_failed.python_module.hint",
     "Install it for this python (the Debian package python3-{1}, or pip install {0}), or "
     "correct its name.",
     "この python 用にインストールするか（Debian パッケージ python3-{1}、または pip install "
     "{0}）、名前を直してください。"},
    {"advice.relative_path.python",
     "A run's current folder is the debugger's data folder, not the plug-in's: open {0} from "
     "the plug-in file's own folder, os.path.join(os.path.dirname(os.path.abspath(__file__)), "
     "\"{0}\").",
     "実行時の現在のフォルダはプラグインのフォルダではなくデバッガのデータフォルダです。{0} は"
     "プラグインファイル自身のフォルダから開いてください: "
     "os.path.join(os.path.dirname(os.path.abspath(__file__)), \"{0}\")。"},
    {"advice.relative_path.ruby",
     "A run's current folder is the debugger's data folder, not the plug-in's: open {0} from "
     "the plug-in file's own folder, File.join(__dir__, \"{0}\").",
     "実行時の現在のフォルダはプラグインのフォルダではなくデバッガのデータフォルダです。{0} は"
     "プラグインファイル自身のフォルダから開いてください: File.join(__dir__, \"{0}\")。"},
    {"advice.relative_path.perl",
     "A run's current folder is the debugger's data folder, not the plug-in's: open a file by "
     "the plug-in file's own folder, File::Basename::dirname(__FILE__) . '/{0}'.",
     "実行時の現在のフォルダはプラグインのフォルダではなくデバッガのデータフォルダです。ファイル"
     "はプラグインファイル自身のフォルダから開いてください: "
     "File::Basename::dirname(__FILE__) . '/{0}'。"},
    {"advice.no_input",
     "A plug-in has no standard input, so input() meets its end at once: take the text from "
     "the request, request[\"composition_string\"].",
     "プラグインには標準入力がないので、input() はすぐに終わりに達します。文字列は要求から"
     "受け取ってください: request[\"composition_string\"]。"},
    {"plugin_exception.warning", "Before the error the interpreter warned: {0}",
     "エラーの前にインタプリタが警告しました: {0}"},
    {"entry_missing.class_somewhere",
     "The plug-in declares Qiro_plugin as a class, not a module; the bridge includes it to call "
     "{0}.",
     "プラグインは Qiro_plugin をモジュールではなくクラスとして宣言しています。ブリッジは {0} "
     "を呼ぶためにそれをインクルードします。"},
    {"entry_missing.class",
     "\"{0}\" on line {1} declares a class, not a module; the bridge includes Qiro_plugin, which "
     "only a module allows.",
     "{1} 行目の「{0}」はモジュールではなくクラスを宣言しています。ブリッジは Qiro_plugin を"
     "インクルードしますが、それができるのはモジュールだけです。"},
    {"entry_missing.parameters",
     "\"{0}\" on line {1} takes {2} parameters; the bridge passes 1, the request.",
     "{1} 行目の「{0}」は引数を {2} 個取りますが、ブリッジが渡すのは要求の 1 個です。"},
    {"entry_missing.name_case",
     "\"{0}\" on line {1} spells the name with another case; the bridge looks for the exact "
     "name.",
     "{1} 行目の「{0}」は名前の大文字と小文字が違います。ブリッジは正確な名前を探します。"},
    {"wrong_return_shape.flattened",
     "The entry returned, but the value is wrong: {0} separate values follow \"candidate\", "
     "because the list went into the return value flat instead of as one reference; the bridge "
     "then failed on it.",
     "エントリは戻りましたが、値が正しくありません。「candidate」の後に {0} 個の値が並んでいます。"
     "リストが 1 つのリファレンスではなく、展開されて戻り値に入ったためで、ブリッジはそこで"
     "失敗しました。"},
    {"wrong_return_shape.flattened.hint", "Pass a reference to the list: {0} becomes {1}",
     "リストへのリファレンスを渡してください: {0} を {1} に"},
    {"candidate_dropped.many", "{0} candidates are dropped ({1}), each for this reason: {2}.",
     "{0} 個の候補 ({1}) が捨てられます。理由はどれも同じです: {2}。"},
    {"candidate_dropped.field.many", "{0} candidates ({1}) lose {2}, each for this reason: {3}.",
     "{0} 個の候補 ({1}) の {2}: どれも同じ理由です: {3}。"},
    {"reason.cut.many", "it is longer than {1} characters and is cut",
     "{1} 文字を超えるので切られます"},
    {"reason.dropped_over_limit.many", "a jump address over {1} characters is dropped",
     "{1} 文字を超えるジャンプ先は捨てられます"},
};

} // namespace

std::string text(std::string_view a_key, ui_language a_language,
                 std::initializer_list<std::string_view> a_values) {
    std::string_view pattern = a_key;
    for (const auto& item : table) {
        if (item.key == a_key) {
            pattern = a_language == ui_language::japanese ? item.japanese : item.english;
            break;
        }
    }
    std::string result;
    result.reserve(pattern.size());
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        const std::size_t number = at + 2 < pattern.size() && pattern[at] == '{' &&
                                           pattern[at + 2] == '}' && pattern[at + 1] >= '0' &&
                                           pattern[at + 1] <= '9'
                                       ? static_cast<std::size_t>(pattern[at + 1] - '0')
                                       : a_values.size();
        if (number < a_values.size()) {
            result += *(a_values.begin() + number);
            at += 2;
        } else {
            result += pattern[at];
        }
    }
    return result;
}

} // namespace qiro_plugin::diagnosis
