#include "build_version.hpp"
#include "debugger/core/plugin_discovery.hpp"
#include "debugger/window/ui_controller.hpp"
#include "debugger/window/window_translations.hpp"
#include "platform/termination_signals.hpp"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QMainWindow>
#include <QTimer>

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
    parser.process(*application);
    if (parser.isSet(version_option)) {
        std::puts(qiro_plugin::build_info::version_text("qiro-lumen-debugger").c_str());
        return 0;
    }
    if (parser.isSet(folder_option)) {
        qiro_plugin::debugger::set_plugin_folder(
            qiro_plugin::debugger::make_plugin_folder(parser.value(folder_option).toStdString()));
    }

    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/qiro-lumen-debugger.svg")));
    auto& controller = qiro_plugin::debugger::ui_controller::getInstance();
    controller.window()->show();
    QTimer::singleShot(0, &controller, &qiro_plugin::debugger::ui_controller::reload);
    return QApplication::exec();
}
