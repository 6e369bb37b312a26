#include "window/window_menus.hpp"

#include <QAction>
#include <QCoreApplication>
#include <QKeySequence>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace qiro_plugin::debugger {

namespace {

QString text(const char* a_source) {
    return QCoreApplication::translate("window_menus", a_source);
}

QAction* add(QMenu* a_menu, const char* a_name, const char* a_text,
             const QKeySequence& a_shortcut = {}) {
    QAction* action = a_menu->addAction(text(a_text));
    action->setObjectName(QString::fromLatin1(a_name));
    action->setShortcut(a_shortcut);
    return action;
}

} // namespace

window_menus make_window_menus(QMainWindow* a_window) {
    window_menus menus;
    QMenuBar* bar = a_window->menuBar();
    QMenu* file = bar->addMenu(text(QT_TRANSLATE_NOOP("window_menus", "&File")));
    menus.new_plugin = add(file, "action_new_plugin",
                           QT_TRANSLATE_NOOP("window_menus", "&New Plug-in…"), QKeySequence::New);
    menus.open_folder =
        add(file, "action_open_folder", QT_TRANSLATE_NOOP("window_menus", "&Open Plug-in Folder…"),
            QKeySequence::Open);
    menus.open_recent =
        file->addMenu(text(QT_TRANSLATE_NOOP("window_menus", "Open Re&cent Plug-in Folder")));
    menus.open_recent->setObjectName(QStringLiteral("menu_open_recent"));
    menus.reload = add(file, "action_reload", QT_TRANSLATE_NOOP("window_menus", "&Reload"),
                       QKeySequence(Qt::Key_F5));
    file->addSeparator();
    menus.save_output = add(file, "action_save_output",
                            QT_TRANSLATE_NOOP("window_menus", "&Save Output…"), QKeySequence::Save);
    menus.save_error =
        add(file, "action_save_error", QT_TRANSLATE_NOOP("window_menus", "Save &Error Output…"));
    file->addSeparator();
    menus.settings = add(file, "action_settings", QT_TRANSLATE_NOOP("window_menus", "Se&ttings…"),
                         QKeySequence::Preferences);
    file->addSeparator();
    menus.quit = add(file, "action_quit", QT_TRANSLATE_NOOP("window_menus", "&Quit"),
                     QKeySequence(Qt::CTRL | Qt::Key_Q));

    QMenu* run = bar->addMenu(text(QT_TRANSLATE_NOOP("window_menus", "R&un")));
    menus.run_menu = run;
    menus.run = add(run, "action_run", QT_TRANSLATE_NOOP("window_menus", "&Run"),
                    QKeySequence(Qt::CTRL | Qt::Key_Return));
    menus.callback = add(run, "action_callback", QT_TRANSLATE_NOOP("window_menus", "&Callback"));
    menus.preference =
        add(run, "action_preference", QT_TRANSLATE_NOOP("window_menus", "&Preference"));
    menus.stop = add(run, "action_stop", QT_TRANSLATE_NOOP("window_menus", "&Stop"),
                     QKeySequence(Qt::Key_Escape));
    run->addSeparator();
    menus.debug = add(run, "action_debug", QT_TRANSLATE_NOOP("window_menus", "&Debug"),
                      QKeySequence(Qt::Key_F6));
    menus.copy_attach = add(run, "action_copy_attach",
                            QT_TRANSLATE_NOOP("window_menus", "Copy &Attach Configuration"),
                            QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    menus.copy_attach->setEnabled(false);
    run->addSeparator();
    menus.run_on_save =
        add(run, "action_run_on_save", QT_TRANSLATE_NOOP("window_menus", "Run on Sa&ve"));
    menus.run_on_save->setCheckable(true);

    QMenu* help = bar->addMenu(text(QT_TRANSLATE_NOOP("window_menus", "&Help")));
    menus.readme = add(help, "action_readme", QT_TRANSLATE_NOOP("window_menus", "&README"),
                       QKeySequence::HelpContents);
    menus.about = add(help, "action_about", QT_TRANSLATE_NOOP("window_menus", "&About"));
    return menus;
}

} // namespace qiro_plugin::debugger
