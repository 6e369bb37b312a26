<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja_JP">
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
        <source>Put your plug-in files (.py, .rb, .pl, each with its optional .xml preference document) in the plugin folder beside this program and press Reload. Run checks the chosen plug-in&apos;s syntax and then runs it on the written form exactly as the plug-in manager would. The upper pane shows what the interpreter printed on standard output (the syntax check&apos;s reply, then the result document); the lower pane shows its standard error.</source>
        <translation>プラグインファイル（.py .rb .pl と、必要ならその設定文書 .xml）をこのプログラムの横の plugin フォルダに置き、「再読み込み」を押してください。「実行」は選んだプラグインの文法を確かめてから、プラグインマネージャと同じ方法で表記を渡して実行します。上の枠にはインタプリタの標準出力（文法チェックの返答と結果文書）、下の枠には標準エラー出力が表示されます。</translation>
    </message>
</context>
<context>
    <name>qiro_plugin::debugger::ui_controller</name>
    <message>
        <source>%1 ran as %2: %3 candidates (syntax check %4 ms, run %5 ms).</source>
        <translation>%1 を %2 で実行しました: 候補 %3 件（文法チェック %4 ms、実行 %5 ms）。</translation>
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
        <source>after a failed or empty run</source>
        <translation>失敗したか候補がなかった実行のあと</translation>
    </message>
    <message>
        <source>after every run</source>
        <translation>毎回の実行のあと</translation>
    </message>
    <message>
        <source>never</source>
        <translation>しない</translation>
    </message>
    <message>
        <source>A probe runs the plug-in a second time to see what its entry returned and which candidates the bridge drops.</source>
        <translation>プローブはプラグインをもう一度実行し、エントリが返した値と、ブリッジが捨てる候補を調べます。</translation>
    </message>
    <message>
        <source>Probe the plug-in:</source>
        <translation>プラグインのプローブ:</translation>
    </message>
</context>
</TS>
