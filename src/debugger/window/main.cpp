#include "debugger/core/plugin_discovery.hpp"
#include "debugger/window/cases_tab.hpp"
#include "debugger/window/ui_controller.hpp"
#include "debugger/window/window_translations.hpp"
#include "platform/termination_signals.hpp"

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDockWidget>
#include <QIcon>
#include <QMainWindow>
#include <QPushButton>
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
    // The Cases tab docks below the panes and follows the plug-in menu.
    auto* cases_dock = new QDockWidget(QObject::tr("Cases"), controller.window());
    cases_dock->setObjectName(QStringLiteral("cases_dock"));
    auto* cases = new qiro_plugin::debugger::cases_tab(
        [&controller] { return controller.menu_model().selected_plugin(); }, cases_dock);
    cases_dock->setWidget(cases);
    controller.window()->addDockWidget(Qt::BottomDockWidgetArea, cases_dock);
    // The window grows by the tab rather than squeezing the output panes.
    controller.window()->resize(controller.window()->width(),
                                controller.window()->height() + cases_dock->sizeHint().height());
    // Connected after the controller's own handlers, so the tab reads the new selection.
    if (auto* menu = controller.window()->findChild<QComboBox*>(
            QStringLiteral("m_loaded_plusins_popup_button"))) {
        QObject::connect(menu, &QComboBox::activated, cases,
                         &qiro_plugin::debugger::cases_tab::reload);
    }
    if (auto* reload =
            controller.window()->findChild<QPushButton*>(QStringLiteral("m_reload_button"))) {
        QObject::connect(reload, &QPushButton::clicked, cases,
                         &qiro_plugin::debugger::cases_tab::reload);
    }
    controller.window()->show();
    QTimer::singleShot(0, &controller, &qiro_plugin::debugger::ui_controller::reload);
    QTimer::singleShot(0, cases, &qiro_plugin::debugger::cases_tab::reload);
    return QApplication::exec();
}
