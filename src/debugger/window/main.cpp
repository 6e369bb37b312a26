#include "debugger/core/plugin_discovery.hpp"
#include "debugger/window/ui_controller.hpp"
#include "debugger/window/window_translations.hpp"
#include "debugger/window/workbench.hpp"
#include "platform/termination_signals.hpp"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QMainWindow>

#include <cstdio>

int main(int argc, char* argv[]) {
    qiro_plugin::utility::end_running_commands_on_termination_signals();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QIRO Lumen Script Plug-in Debugger"));
    QApplication::setDesktopFileName(QStringLiteral("qiro-lumen-debugger"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/qiro-lumen-debugger.svg")));
    qiro_plugin::debugger::install_window_translations(application);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Runs qiro candidate script plug-ins as the plug-in manager would."));
    parser.addHelpOption();
    const QCommandLineOption folder_option(
        QStringLiteral("plugin-folder"),
        QStringLiteral("List plug-ins in DIR instead of the plugin folder beside the program."),
        QStringLiteral("DIR"));
    parser.addOption(folder_option);
    const QCommandLineOption run_option(
        QStringLiteral("run"),
        QStringLiteral("Select FILE (a name in the plug-in folder, or a path), type "
                       "WRITTEN_FORM and run it once the window is up."),
        QStringLiteral("FILE"));
    parser.addOption(run_option);
    parser.addPositionalArgument(QStringLiteral("WRITTEN_FORM"),
                                 QStringLiteral("The written form for --run."));
    parser.process(application);

    qiro_plugin::debugger::start_options options;
    if (parser.isSet(folder_option)) {
        options.plugin_folder = parser.value(folder_option);
    }
    if (parser.isSet(run_option)) {
        if (parser.positionalArguments().size() != 1) {
            std::fputs("qiro-lumen-debugger: --run needs FILE and WRITTEN_FORM\n", stderr);
            return 2;
        }
        options.run_file = parser.value(run_option);
        options.run_written_form = parser.positionalArguments().front();
    } else if (!parser.positionalArguments().isEmpty()) {
        std::fputs("qiro-lumen-debugger: a written form is only taken with --run\n", stderr);
        return 2;
    }

    auto& controller = qiro_plugin::debugger::ui_controller::getInstance();
    auto* bench = new qiro_plugin::debugger::workbench(controller);
    bench->start(options);
    return QApplication::exec();
}
