<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja_JP">
<context>
    <name>qiro_plugin::debugger::candidate_preview</name>
    <message>
        <source>Title</source>
        <translation>見出し</translation>
        </message>
    <message>
        <source>Comment</source>
        <translation>コメント</translation>
        </message>
    <message>
        <source>Alternative</source>
        <translation>代替</translation>
        </message>
    <message>
        <source>Type</source>
        <translation>種類</translation>
        </message>
    <message>
        <source>Alias</source>
        <translation>別名</translation>
        </message>
    <message>
        <source>Info</source>
        <translation>情報</translation>
        </message>
    <message>
        <source>Cand&amp;idates</source>
        <translation>候補(&amp;I)</translation>
        </message>
    <message>
        <source>Candidate list docu&amp;ment</source>
        <translation>候補リスト文書(&amp;M)</translation>
        </message>
</context>
<context>
    <name>command_line</name>
    <message>
        <source>Runs qiro candidate script plug-ins as the plug-in manager would.</source>
        <translation>qiro の候補スクリプトプラグインを、プラグインマネージャと同じように実行します。</translation>
    </message>
    <message>
        <source>Show the version and exit.</source>
        <translation>バージョンを表示して終了します。</translation>
    </message>
    <message>
        <source>List plug-ins in DIR instead of the plugin folder beside the program.</source>
        <translation>プログラムの隣の plugin フォルダではなく DIR のプラグインを一覧にします。</translation>
    </message>
    <message>
        <source>Select FILE (a name in the plug-in folder, or a path), type WRITTEN_FORM and run it once the window is up.</source>
        <translation>FILE（プラグインフォルダ内の名前またはパス）を選び、WRITTEN_FORM を入力して、ウィンドウが開いたら実行します。</translation>
    </message>
    <message>
        <source>The written form for --run.</source>
        <translation>--run で使う表記。</translation>
    </message>
</context>
<context>
    <name>qiro_plugin::debugger::history_panel</name>
    <message numerus="yes">
        <source>%n candidate(s)</source>
        <translation>
                <numerusform>候補 %n 件</numerusform>
            </translation>
        </message>
    <message>
        <source>output not a result document</source>
        <translation>出力が結果文書ではない</translation>
        </message>
    <message>
        <source>not run</source>
        <translation>実行されず</translation>
        </message>
    <message>
        <source>ended with an error</source>
        <translation>エラーで終了</translation>
        </message>
    <message>
        <source>refused</source>
        <translation>受け付けず</translation>
        </message>
    <message>
        <source>not offered</source>
        <translation>提供されていない</translation>
        </message>
    <message>
        <source>Standard output of the run</source>
        <translation>実行の標準出力</translation>
        </message>
    <message>
        <source>Standard error of the run</source>
        <translation>実行の標準エラー出力</translation>
        </message>
    <message>
        <source>Only the first MiB of each output was kept.</source>
        <translation>各出力は先頭の 1 MiB だけを残しました。</translation>
        </message>
    <message>
        <source>stopped after %1 s</source>
        <translation>%1 秒で停止</translation>
    </message>
    <message>
        <source>timed out after %1 s</source>
        <translation>%1 秒で時間切れ</translation>
    </message>
    <message>
        <source>“%1”</source>
        <translation>「%1」</translation>
    </message>
    <message>
        <source> reading “%1”</source>
        <translation> 読み「%1」</translation>
        </message>
    <message>
        <source>callback</source>
        <translation>コールバック</translation>
        </message>
    <message>
        <source>preference</source>
        <translation>設定</translation>
        </message>
    <message>
        <source> (%1 + %2 ms)</source>
        <translation>（%1 + %2 ms）</translation>
        </message>
    <message>
        <source>From %1 to %2</source>
        <translation>%1 から %2 へ</translation>
        </message>
    <message>
        <source>The same candidates, in another order.</source>
        <translation>同じ候補で、順序だけが違います。</translation>
        </message>
    <message>
        <source>The same candidates.</source>
        <translation>同じ候補です。</translation>
        </message>
    <message>
        <source>The candidates both runs offer are in another order.</source>
        <translation>両方の実行にある候補の順序が違います。</translation>
        </message>
    <message>
        <source>Histor&amp;y</source>
        <translation>履歴(&amp;Y)</translation>
        </message>
</context>
<context>
    <name>main_window</name>
    <message>
        <source>QIRO Lumen Script Plug-in Debugger</source>
        <translation>QIRO Lumen スクリプトプラグイン デバッガ</translation>
    </message>
    <message>
        <source>&amp;Plug-in:</source>
        <translation>プラグイン(&amp;P):</translation>
    </message>
    <message>
        <source>Plug-in files of the plugin folder</source>
        <translation>plugin フォルダのプラグインファイル</translation>
    </message>
    <message>
        <source>Re&amp;load</source>
        <translation>再読み込み(&amp;L)</translation>
    </message>
    <message>
        <source>List the plugin folder again</source>
        <translation>plugin フォルダを読み直します</translation>
    </message>
    <message>
        <source>&amp;Written form:</source>
        <translation>表記(&amp;W):</translation>
    </message>
    <message>
        <source>Text handed to the plug-in (at most 100 UTF-16 units)</source>
        <translation>プラグインに渡す表記（UTF-16 で 100 単位まで）</translation>
    </message>
    <message>
        <source>&amp;Run</source>
        <translation>実行(&amp;R)</translation>
    </message>
    <message>
        <source>Standard output</source>
        <translation>標準出力</translation>
    </message>
    <message>
        <source>Standard error</source>
        <translation>標準エラー出力</translation>
    </message>
    <message>
        <source>Rea&amp;ding:</source>
        <translation>読み(&amp;D):</translation>
    </message>
    <message>
        <source>Optional reading</source>
        <translation>読み（省略可）</translation>
    </message>
    <message>
        <source>Handed to the plug-in as reading_string; left empty, the request is the plug-in manager's own</source>
        <translation>reading_string としてプラグインに渡します。空のままならプラグインマネージャと同じ要求になります</translation>
    </message>
    <message>
        <source>Call&amp;back</source>
        <translation>コールバック(&amp;B)</translation>
    </message>
    <message>
        <source>Call the plug-in back with the candidate selected in the preview</source>
        <translation>プレビューで選んだ候補でプラグインをコールバックします</translation>
    </message>
    <message>
        <source>Prefere&amp;nce</source>
        <translation>設定エントリ(&amp;N)</translation>
    </message>
    <message>
        <source>Run the plug-in's preference entry</source>
        <translation>プラグインの設定エントリを実行します</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>停止(&amp;S)</translation>
    </message>
    <message>
        <source>End the running plug-in now (Esc)</source>
        <translation>実行中のプラグインをすぐに止めます（Esc）</translation>
    </message>
    <message>
        <source>&amp;Output</source>
        <translation>出力(&amp;O)</translation>
    </message>
    <message>
        <source>Put your plug-in files (.py, .rb, .pl, each with its optional .xml preference document) in the plugin folder (its path is in the title bar) and press Reload. Run checks the chosen plug-in's syntax and then runs it on the written form exactly as the plug-in manager would. The upper pane shows what the interpreter printed on standard output (the syntax check's reply, then the result document); the lower pane shows its standard error.</source>
        <translation>プラグインファイル（.py .rb .pl と、必要ならその設定文書 .xml）を plugin フォルダ（パスはタイトルバーにあります）に置き、「再読み込み」を押してください。「実行」は選んだプラグインの文法を確かめてから、プラグインマネージャと同じ方法で表記を渡して実行します。上の枠にはインタプリタの標準出力（文法チェックの返答と結果文書）、下の枠には標準エラー出力が表示されます。</translation>
    </message>
</context>
<context>
    <name>qiro_plugin::debugger::new_plugin_dialog</name>
    <message>
        <source>New Plug-in</source>
        <translation>新しいプラグイン</translation>
        </message>
    <message>
        <source>&amp;Language:</source>
        <translation>言語(&amp;L):</translation>
        </message>
    <message>
        <source>my_plugin</source>
        <translation>my_plugin</translation>
        </message>
    <message>
        <source>&amp;Name:</source>
        <translation>名前(&amp;N):</translation>
        </message>
    <message>
        <source>It is created with its .xml document in %1.</source>
        <translation>%1 に .xml 文書と一緒に作ります。</translation>
        </message>
    <message>
        <source>&amp;Create</source>
        <translation>作成(&amp;C)</translation>
        </message>
</context>
<context>
    <name>qiro_plugin::debugger::output_pane</name>
    <message numerus="yes">
        <source>[… %n more character(s) not shown here; Save Output keeps everything]</source>
        <translation>
                <numerusform>[… ほか %n 文字はここに表示していません。「出力を保存」ですべて保存できます]</numerusform>
            </translation>
        </message>
    <message numerus="yes">
        <source>[… %n more character(s) on this line]</source>
        <translation>
                <numerusform>[… この行にはほかに %n 文字あります]</numerusform>
            </translation>
        </message>
    <message>
        <source>Copy &amp;All</source>
        <translation>すべてコピー(&amp;A)</translation>
        </message>
    <message>
        <source>&amp;Save As…</source>
        <translation>名前を付けて保存(&amp;S)…</translation>
        </message>
    <message>
        <source>Save Output</source>
        <translation>出力を保存</translation>
        </message>
    <message>
        <source>%1 could not be written: %2</source>
        <translation>%1 に書き込めませんでした: %2</translation>
        </message>
</context>
<context>
    <name>qiro_plugin::debugger::sandbox_toggle</name>
    <message>
        <source>Sandbo&amp;x</source>
        <translation>サンドボックス(&amp;X)</translation>
    </message>
    <message>
        <source>No networ&amp;k</source>
        <translation>ネットワークなし(&amp;K)</translation>
    </message>
    <message>
        <source>Run plug-ins inside bubblewrap: the system and the plug-in's folder read-only, the rest of your home folder out of reach.</source>
        <translation>プラグインを bubblewrap の中で実行します。システムとプラグインのフォルダは読み取り専用になり、ホームフォルダのその他の場所には届きません。</translation>
    </message>
    <message>
        <source>Cut the network inside the sandbox.</source>
        <translation>サンドボックスの中ではネットワークを切ります。</translation>
    </message>
</context>
<context>
    <name>qiro_plugin::debugger::settings_dialog</name>
    <message>
        <source>Plug-in Manager Settings</source>
        <translation>プラグインマネージャの設定</translation>
        </message>
    <message>
        <source>Candidates</source>
        <translation>候補</translation>
        </message>
    <message>
        <source>Show plug-in candidates &amp;automatically</source>
        <translation>プラグインの候補を自動で表示する(&amp;A)</translation>
        </message>
    <message>
        <source>S&amp;hift</source>
        <translation>Shift(&amp;H)</translation>
        </message>
    <message>
        <source>C&amp;trl</source>
        <translation>Ctrl(&amp;T)</translation>
        </message>
    <message>
        <source>Opt&amp;ion</source>
        <translation>Option(&amp;I)</translation>
        </message>
    <message>
        <source>Candidate &amp;change key:</source>
        <translation>候補切り替えキー(&amp;C):</translation>
        </message>
    <message>
        <source>Plug-in key &amp;%1:</source>
        <translation>プラグインキー %1(&amp;%1):</translation>
        </message>
    <message>
        <source>Proxy</source>
        <translation>プロキシ</translation>
        </message>
    <message>
        <source>Use a &amp;proxy</source>
        <translation>プロキシを使う(&amp;P)</translation>
        </message>
    <message>
        <source>A&amp;ddress:</source>
        <translation>アドレス(&amp;D):</translation>
        </message>
    <message>
        <source>P&amp;ort:</source>
        <translation>ポート(&amp;O):</translation>
        </message>
    <message>
        <source>The proxy needs a user &amp;name and password</source>
        <translation>プロキシにユーザ名とパスワードが必要(&amp;N)</translation>
        </message>
    <message>
        <source>&amp;User name:</source>
        <translation>ユーザ名(&amp;U):</translation>
        </message>
    <message>
        <source>Pass&amp;word:</source>
        <translation>パスワード(&amp;W):</translation>
        </message>
    <message>
        <source>The password is kept in the keyring.</source>
        <translation>パスワードはキーリングに保存されます。</translation>
        </message>
    <message>
        <source>No keyring is running, so the password can be neither read nor stored. Start one (for example gnome-keyring-daemon) to set it.</source>
        <translation>キーリングが動いていないため、パスワードの読み出しも保存もできません。設定するにはキーリング（例えば gnome-keyring-daemon）を起動してください。</translation>
        </message>
    <message>
        <source>That combination of key and modifiers cannot be assigned.</source>
        <translation>そのキーと修飾キーの組み合わせは割り当てられません。</translation>
        </message>
    <message>
        <source>The settings could not be written to the preference file.</source>
        <translation>設定を設定ファイルに書き込めませんでした。</translation>
        </message>
</context>
<context>
    <name>qiro_plugin::debugger::stop_control</name>
    <message>
        <source>%1 s, stopped</source>
        <translation>%1 秒、停止</translation>
        </message>
    <message>
        <source>%1 s</source>
        <translation>%1 秒</translation>
        </message>
</context>
<context>
    <name>qiro_plugin::debugger::ui_controller</name>
    <message>
        <source>Running…</source>
        <translation>実行中…</translation>
    </message>
    <message numerus="yes">
        <source>%1 ran as %2: %n candidate(s) (syntax check %3 ms, run %4 ms).</source>
        <translation>
                <numerusform>%1 を %2 で実行しました: 候補 %n 件（文法チェック %3 ms、実行 %4 ms）。</numerusform>
            </translation>
        </message>
    <message>
        <source>%1 ran as %2, but its output is not a result document: see the panes.</source>
        <translation>%1 を %2 で実行しましたが、出力が結果文書ではありません。出力枠を見てください。</translation>
        </message>
    <message>
        <source>No interpreter accepted %1: see the panes for what they printed.</source>
        <translation>%1 を受け付けたインタプリタがありませんでした。出力枠にその出力があります。</translation>
        </message>
    <message>
        <source>The run of %1 ended with an error: %2</source>
        <translation>%1 の実行がエラーで終わりました: %2</translation>
        </message>
    <message>
        <source>%1 was not run: %2</source>
        <translation>%1 は実行されませんでした: %2</translation>
    </message>
    <message>
        <source>(sandboxed, no network)</source>
        <translation>（サンドボックス内、ネットワークなし）</translation>
    </message>
    <message>
        <source>(sandboxed)</source>
        <translation>（サンドボックス内）</translation>
    </message>
</context>
<context>
    <name>window_menus</name>
    <message>
        <source>&amp;New Plug-in…</source>
        <translation>新しいプラグイン(&amp;N)…</translation>
    </message>
    <message>
        <source>&amp;Open Plug-in Folder…</source>
        <translation>プラグインフォルダを開く(&amp;O)…</translation>
    </message>
    <message>
        <source>Open Re&amp;cent Plug-in Folder</source>
        <translation>最近開いたプラグインフォルダ(&amp;C)</translation>
    </message>    <message>
        <source>&amp;Reload</source>
        <translation>再読み込み(&amp;R)</translation>
    </message>
    <message>
        <source>&amp;Save Output…</source>
        <translation>出力を保存(&amp;S)…</translation>
    </message>
    <message>
        <source>Save &amp;Error Output…</source>
        <translation>エラー出力を保存(&amp;E)…</translation>
    </message>
    <message>
        <source>Se&amp;ttings…</source>
        <translation>プラグインマネージャの設定(&amp;T)…</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>終了(&amp;Q)</translation>
    </message>
    <message>
        <source>&amp;Run</source>
        <translation>実行(&amp;R)</translation>
    </message>
    <message>
        <source>&amp;Callback</source>
        <translation>コールバック(&amp;C)</translation>
    </message>
    <message>
        <source>&amp;Preference</source>
        <translation>設定エントリ(&amp;P)</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>停止(&amp;S)</translation>
    </message>
    <message>
        <source>&amp;Debug</source>
        <translation>デバッグ(&amp;D)</translation>
    </message>
    <message>
        <source>Copy &amp;Attach Configuration</source>
        <translation>アタッチ設定をコピー(&amp;A)</translation>
    </message>    <message>
        <source>Run on Sa&amp;ve</source>
        <translation>保存したら実行(&amp;V)</translation>
    </message>
    <message>
        <source>&amp;README</source>
        <translation>README(&amp;R)</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>このアプリケーションについて(&amp;A)</translation>
    </message>
    <message>
        <source>R&amp;un</source>
        <translation>実行(&amp;U)</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>ファイル(&amp;F)</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>ヘルプ(&amp;H)</translation>
    </message>
</context>
<context>
    <name>qiro_plugin::debugger::workbench</name>
    <message>
        <source>%1 was stopped.</source>
        <translation>%1 を停止しました。</translation>
        </message>
    <message>
        <source>Open Plug-in Folder</source>
        <translation>プラグインフォルダを開く</translation>
        </message>
    <message>
        <source>%1 is not in the plug-in folder %2.</source>
        <translation>%1 はプラグインフォルダ %2 にありません。</translation>
        </message>
    <message>
        <source>QIRO Lumen Script Plug-in Debugger — %1</source>
        <translation>QIRO Lumen スクリプトプラグイン デバッガ — %1</translation>
        </message>
    <message>
        <source>callback</source>
        <translation>コールバック</translation>
        </message>
    <message>
        <source>preference entry</source>
        <translation>設定エントリ</translation>
        </message>
    <message>
        <source>The %1 ran as %2 in %3 ms: see the panes.</source>
        <translation>%1 を %2 で実行しました（%3 ms）。出力枠を見てください。</translation>
        </message>
    <message>
        <source>No interpreter accepted the plug-in: see the panes.</source>
        <translation>プラグインを受け付けたインタプリタがありませんでした。出力枠を見てください。</translation>
        </message>
    <message>
        <source>The plug-in's .xml document does not offer the %1.</source>
        <translation>プラグインの .xml 文書は%1を提供していません。</translation>
        </message>
    <message>
        <source>The %1 ended with an error: %2</source>
        <translation>%1 がエラーで終わりました: %2</translation>
        </message>
    <message>
        <source>Save Error Output</source>
        <translation>エラー出力を保存</translation>
        </message>
    <message>
        <source>Save Output</source>
        <translation>出力を保存</translation>
        </message>
    <message>
        <source>The plug-in folder %1 is not writable: choose a folder for the new plug-in</source>
        <translation>プラグインフォルダ %1 には書き込めません。新しいプラグインを置くフォルダを選んでください</translation>
        </message>
    <message>
        <source>No folder was chosen.</source>
        <translation>フォルダが選ばれませんでした。</translation>
        </message>
    <message>
        <source>Created %1 and its .xml document.</source>
        <translation>%1 と .xml 文書を作りました。</translation>
        </message>
    <message>
        <source>New Plug-in</source>
        <translation>新しいプラグイン</translation>
        </message>
    <message>
        <source>README</source>
        <translation>README</translation>
        </message>
    <message>
        <source>The README was not found beside the program.</source>
        <translation>プログラムの横に README が見つかりません。</translation>
        </message>
    <message>
        <source>About QIRO Lumen Script Plug-in Debugger</source>
        <translation>QIRO Lumen スクリプトプラグイン デバッガについて</translation>
        </message>
    <message>
        <source>&lt;p&gt;&lt;b&gt;QIRO Lumen Script Plug-in Debugger&lt;/b&gt;&lt;/p&gt;&lt;p&gt;Runs the candidate plug-ins of the qiro input method (Python, Ruby, Perl) exactly as its plug-in manager would, and shows what they print.&lt;/p&gt;</source>
        <translation>&lt;p&gt;&lt;b&gt;QIRO Lumen スクリプトプラグイン デバッガ&lt;/b&gt;&lt;/p&gt;&lt;p&gt;qiro 入力メソッドの候補プラグイン（Python、Ruby、Perl）をプラグインマネージャと同じ方法で実行し、その出力を表示します。&lt;/p&gt;</translation>
        </message>
</context>
<context>
    <name>qiro_plugin::debugger::diagnosis_list</name>
    <message>
        <source>Diagnosis</source>
        <translation>診断</translation>
    </message>
    <message>
        <source>Place</source>
        <translation>場所</translation>
    </message>
    <message>
        <source>Dia&amp;gnosis:</source>
        <translation>診断(&amp;G):</translation>
    </message>
    <message>
        <source>standard error so far, last lines</source>
        <translation>ここまでの標準エラー出力（最後の数行）</translation>
    </message>
    <message>
        <source>After a &amp;Failed or Empty Run</source>
        <translation>失敗したか候補がなかった実行のあと(&amp;F)</translation>
    </message>
    <message>
        <source>After &amp;Every Run</source>
        <translation>毎回の実行のあと(&amp;E)</translation>
    </message>
    <message>
        <source>&amp;Never</source>
        <translation>しない(&amp;N)</translation>
    </message>
    <message>
        <source>A probe runs the plug-in a second time to see what its entry returned and which candidates the bridge drops.</source>
        <translation>プローブはプラグインをもう一度実行し、エントリが返した値と、ブリッジが捨てる候補を調べます。</translation>
    </message>
    <message>
        <source>Pro&amp;be the Plug-in</source>
        <translation>プラグインをプローブ(&amp;B)</translation>
    </message>
</context>
<context>
    <name>history_cases</name>
    <message>
        <source>Cas&amp;es</source>
        <translation>ケース(&amp;E)</translation>
    </message>
    <message>
        <source>A callback run cannot be saved as a case from the history.</source>
        <translation>コールバックの実行は履歴からケースとして保存できません。</translation>
    </message>
    <message>
        <source>Save as Case…</source>
        <translation>ケースとして保存…</translation>
    </message>
    <message>
        <source>Save as Case</source>
        <translation>ケースとして保存</translation>
    </message>
    <message>
        <source>Name of the case:</source>
        <translation>ケースの名前:</translation>
    </message>
</context>
<context>
    <name>qiro_plugin::debugger::cases_tab</name>
    <message>
        <source>Making the HTML report…</source>
        <translation>HTML レポートを作っています…</translation>
    </message>
    <message>
        <source>The coverage report could not be written.</source>
        <translation>カバレッジレポートを書き込めませんでした。</translation>
    </message>
    <message>
        <source>genhtml is missing: install the Debian package lcov.</source>
        <translation>genhtml がありません。Debian パッケージ lcov をインストールしてください。</translation>
    </message>
    <message>
        <source>genhtml failed: %1</source>
        <translation>genhtml が失敗しました: %1</translation>
    </message>
    <message>
        <source>%1 passed, %2 failed</source>
        <translation>%1 件成功、%2 件失敗</translation>
    </message>
    <message>
        <source>%1:%2:%3: %4
</source>
        <translation>%1:%2:%3: %4
</translation>
    </message>
    <message>
        <source>&amp;Coverage report</source>
        <translation>カバレッジの報告(&amp;C)</translation>
    </message>
    <message>
        <source>&amp;First Line Not Reached</source>
        <translation>最初に到達しなかった行(&amp;F)</translation>
    </message>
    <message>
        <source>&amp;HTML Report</source>
        <translation>HTML レポート(&amp;H)</translation>
    </message>
    <message>
        <source>Case</source>
        <translation>ケース</translation>
    </message>
    <message>
        <source>Co&amp;verage</source>
        <translation>カバレッジ(&amp;V)</translation>
    </message>
    <message>
        <source>FAIL</source>
        <translation>失敗</translation>
    </message>
    <message>
        <source>Input</source>
        <translation>入力</translation>
    </message>
    <message>
        <source>No cases yet: save a run as a case, or write %1.</source>
        <translation>ケースはまだありません。実行をケースとして保存するか、%1 を書いてください。</translation>
    </message>
    <message>
        <source>No coverage: see the cases' results.</source>
        <translation>カバレッジはありません。各ケースの結果を見てください。</translation>
    </message>
    <message>
        <source>No plug-in selected.</source>
        <translation>プラグインが選ばれていません。</translation>
    </message>
    <message>
        <source>Passed.
</source>
        <translation>成功しました。
</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>結果</translation>
    </message>
    <message>
        <source>Run &amp;all</source>
        <translation>すべて実行(&amp;A)</translation>
    </message>
    <message>
        <source>Run each case under its language's coverage tool and show which lines of the plug-in the cases reach.</source>
        <translation>各ケースをその言語のカバレッジツールの下で実行し、ケースがプラグインのどの行に到達したかを表示します。</translation>
    </message>
    <message>
        <source>Run selec&amp;ted</source>
        <translation>選んだケースを実行(&amp;T)</translation>
    </message>
    <message>
        <source>The cases file has problems: see below.</source>
        <translation>ケースファイルに問題があります。下を見てください。</translation>
    </message>
    <message>
        <source>The coverage report could not be written.</source>
        <translation>カバレッジの報告を書き込めませんでした。</translation>
    </message>
    <message>
        <source>
Candidates (- expected, + actual):
</source>
        <translation>
候補（- 期待、+ 実際）:
</translation>
    </message>
    <message>
        <source>
Standard error:
</source>
        <translation>
標準エラー出力:
</translation>
    </message>
    <message>
        <source>callback: %1</source>
        <translation>コールバック: %1</translation>
    </message>
    <message>
        <source>genhtml failed: %1</source>
        <translation>genhtml が失敗しました: %1</translation>
    </message>
    <message>
        <source>genhtml is missing: install the Debian package lcov.</source>
        <translation>genhtml がありません。Debian パッケージ lcov をインストールしてください。</translation>
    </message>
    <message>
        <source>not run</source>
        <translation>未実行</translation>
    </message>
    <message>
        <source>pass</source>
        <translation>成功</translation>
    </message>
    <message>
        <source>preference</source>
        <translation>設定エントリ</translation>
    </message>
    <message>
        <source>running…</source>
        <translation>実行中…</translation>
    </message>
    <message>
        <source>stopped</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>%1 passed, %2 failed, %3 stopped</source>
        <translation>%1 件成功、%2 件失敗、%3 件停止</translation>
    </message>
    <message>
        <source>Stop (Esc) ends the running cases.</source>
        <translation>停止（Esc）で実行中のケースを終えます。</translation>
    </message>
    <message>
        <source>%1: %2 of %3 lines (%4 %)</source>
        <translation>%1: %3 行中 %2 行（%4 %）</translation>
    </message>
    <message>
        <source>, %1 of %2 branches</source>
        <translation>、分岐 %2 個中 %1 個</translation>
    </message>
    <message numerus="yes">
        <source>%n case(s).</source>
        <translation>
            <numerusform>ケース %n 件。</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>qiro_plugin::debugger::soak_tab</name>
    <message>
        <source>edge (built in)</source>
        <translation>edge（組み込み）</translation>
    </message>
    <message>
        <source>skk (SKK-JISYO.L)</source>
        <translation>skk（SKK-JISYO.L）</translation>
    </message>
    <message>
        <source>File…</source>
        <translation>ファイル…</translation>
    </message>
    <message>
        <source>The written forms to run: edge cases that once broke real programs, every written form of the SKK dictionary, or a file of one form per line (an optional TAB and reading).</source>
        <translation>実行する表記: 実際のプログラムを壊したことのある境界の例、SKK 辞書のすべての表記、または 1 行に 1 表記のファイル（TAB の後に読みを書けます）。</translation>
    </message>
    <message>
        <source>all</source>
        <translation>すべて</translation>
    </message>
    <message>
        <source>Limit: </source>
        <translation>上限: </translation>
    </message>
    <message>
        <source>Run a sample of this many inputs, the same each time.</source>
        <translation>この数の入力を標本として実行します（毎回同じ標本です）。</translation>
    </message>
    <message>
        <source>Fast</source>
        <translation>高速</translation>
    </message>
    <message>
        <source>Load the plug-in once and fork each input's run from it; a sample and every failure run again faithfully.</source>
        <translation>プラグインを一度だけ読み込み、入力ごとにそこから fork して実行します。一部の標本とすべての失敗は忠実な実行でもう一度確かめます。</translation>
    </message>
    <message>
        <source>Soak</source>
        <translation>ソーク</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Failure</source>
        <translation>失敗</translation>
    </message>
    <message>
        <source>Inputs</source>
        <translation>入力数</translation>
    </message>
    <message>
        <source>Shortest input</source>
        <translation>最短の入力</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>メッセージ</translation>
    </message>
    <message>
        <source>Open as Run</source>
        <translation>実行として開く</translation>
    </message>
    <message>
        <source>Save as Case</source>
        <translation>ケースとして保存</translation>
    </message>
    <message>
        <source>Corpus of Written Forms</source>
        <translation>表記のコーパス</translation>
    </message>
    <message>
        <source>Choose a corpus first.</source>
        <translation>先にコーパスを選んでください。</translation>
    </message>
    <message>
        <source>Choose a plug-in first.</source>
        <translation>先にプラグインを選んでください。</translation>
    </message>
    <message>
        <source>Soaking %1…</source>
        <translation>%1 をソーク中…</translation>
    </message>
    <message>
        <source>Stopped after %1 of %2 inputs.</source>
        <translation>%2 件中 %1 件の入力の後で停止しました。</translation>
    </message>
    <message>
        <source>Fast mode off, ran faithfully: %1</source>
        <translation>高速モードを使わず忠実に実行しました: %1</translation>
    </message>
    <message>
        <source>Choose a failure first.</source>
        <translation>先に失敗を選んでください。</translation>
    </message>
    <message>
        <source>Saved as a case in %1.</source>
        <translation>%1 にケースとして保存しました。</translation>
    </message>
    <message>
        <source>%1 is no longer in the plug-in menu.</source>
        <translation>%1 はもうプラグインのメニューにありません。</translation>
    </message>
    <message numerus="yes">
        <source>%n input(s) in %1 s.</source>
        <translation>
            <numerusform>%n 件の入力を %1 秒で実行しました。</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n fast run(s) differ from their faithful runs.</source>
        <translation>
            <numerusform>%n 件の高速実行が忠実な実行と異なります。</numerusform>
        </translation>
    </message>
</context>
</TS>
