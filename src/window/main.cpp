#include "build_version.hpp"
#include "platform/termination_signals.hpp"
#include "window/cases_tab.hpp"
#include "window/history_cases.hpp"
#include "window/soak_tab.hpp"
#include "window/ui_controller.hpp"
#include "window/window_translations.hpp"
#include "window/workbench.hpp"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>

#include <cstdio>
#include <memory>
#include <string_view>

namespace {

// The help and the version are text only, so they answer without a display.
bool needs_window(int a_argc, char* a_argv[]) {
    for (int i = 1; i < a_argc; ++i) {
        const std::string_view argument = a_argv[i];
        if (argument == "--") {
            break;
        }
        if (argument == "-h" || argument == "--help" || argument == "-?" ||
            argument == "--help-all" || argument == "-v" || argument == "--version") {
            return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char* argv[]) {
    qiro_plugin::utility::end_running_commands_on_termination_signals();
    const std::unique_ptr<QCoreApplication> application =
        needs_window(argc, argv) ? std::make_unique<QApplication>(argc, argv)
                                 : std::make_unique<QCoreApplication>(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QIRO Lumen Script Plug-in Debugger"));
    QApplication::setDesktopFileName(QStringLiteral("qiro-lumen-debugger"));
    qiro_plugin::debugger::install_window_translations(*application);

    QCommandLineParser parser;
    parser.setApplicationDescription(QCoreApplication::translate(
        "command_line", "Runs qiro candidate script plug-ins as the plug-in manager would."));
    parser.addHelpOption();
    const QCommandLineOption version_option(
        {QStringLiteral("v"), QStringLiteral("version")},
        QCoreApplication::translate("command_line", "Show the version and exit."));
    parser.addOption(version_option);
    const QCommandLineOption folder_option(
        QStringLiteral("plugin-folder"),
        QCoreApplication::translate(
            "command_line",
            "List plug-ins in DIR instead of the plugin folder beside the program."),
        QStringLiteral("DIR"));
    parser.addOption(folder_option);
    const QCommandLineOption run_option(
        QStringLiteral("run"),
        QCoreApplication::translate("command_line",
                                    "Select FILE (a name in the plug-in folder, or a path), type "
                                    "WRITTEN_FORM and run it once the window is up."),
        QStringLiteral("FILE"));
    parser.addOption(run_option);
    parser.addPositionalArgument(
        QStringLiteral("WRITTEN_FORM"),
        QCoreApplication::translate("command_line", "The written form for --run."));
    parser.process(*application);
    if (parser.isSet(version_option)) {
        std::puts(qiro_plugin::build_info::version_text("qiro-lumen-debugger").c_str());
        return 0;
    }

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

    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/qiro-lumen-debugger.svg")));
    auto& controller = qiro_plugin::debugger::ui_controller::getInstance();
    auto* bench = new qiro_plugin::debugger::workbench(controller);
    auto* cases = qiro_plugin::debugger::add_cases_tab(controller, *bench);
    qiro_plugin::debugger::add_soak_tab(controller, *bench, [cases] { cases->reload(); });
    bench->start(options);
    return QApplication::exec();
}
