<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
    <context>
        <name>qiro_plugin::debugger::history_panel</name>
        <message numerus="yes">
            <source>%n candidate(s)</source>
            <translation>
                <numerusform>%n candidate</numerusform>
                <numerusform>%n candidates</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>qiro_plugin::debugger::output_pane</name>
        <message numerus="yes">
            <source>[… %n more character(s) not shown here; Save Output keeps everything]</source>
            <translation>
                <numerusform>[… %n more character not shown here; Save Output keeps everything]</numerusform>
                <numerusform>[… %n more characters not shown here; Save Output keeps everything]</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>[… %n more character(s) on this line]</source>
            <translation>
                <numerusform>[… %n more character on this line]</numerusform>
                <numerusform>[… %n more characters on this line]</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>qiro_plugin::debugger::cases_tab</name>
        <message numerus="yes">
            <source>%n case(s).</source>
            <translation>
                <numerusform>%n case.</numerusform>
                <numerusform>%n cases.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>qiro_plugin::debugger::ui_controller</name>
        <message numerus="yes">
            <source>%1 ran as %2: %n candidate(s) (syntax check %3 ms, run %4 ms).</source>
            <translation>
                <numerusform>%1 ran as %2: %n candidate (syntax check %3 ms, run %4 ms).</numerusform>
                <numerusform>%1 ran as %2: %n candidates (syntax check %3 ms, run %4 ms).</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>qiro_plugin::debugger::soak_tab</name>
        <message numerus="yes">
            <source>%n input(s) in %1 s.</source>
            <translation>
                <numerusform>%n input in %1 s.</numerusform>
                <numerusform>%n inputs in %1 s.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n fast run(s) differ from their faithful runs.</source>
            <translation>
                <numerusform>%n fast run differs from its faithful run.</numerusform>
                <numerusform>%n fast runs differ from their faithful runs.</numerusform>
            </translation>
        </message>
    </context>
</TS>
