#include "debugger/core/plugin_discovery.hpp"
#include "debugger/window/ui_controller.hpp"
#include "debugger/window/window_translations.hpp"
#include "platform/termination_signals.hpp"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QMainWindow>
#include <QTimer>

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
    parser.process(application);
    if (parser.isSet(folder_option)) {
        qiro_plugin::debugger::set_plugin_folder(
            qiro_plugin::debugger::make_plugin_folder(parser.value(folder_option).toStdString()));
    }

    auto& controller = qiro_plugin::debugger::ui_controller::getInstance();
    controller.window()->show();
    QTimer::singleShot(0, &controller, &qiro_plugin::debugger::ui_controller::reload);
    return QApplication::exec();
}
