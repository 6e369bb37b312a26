// The window's texts as a user meets them, in the language QIRO_TEST_LANGUAGE names ("ja" or
// "en"): every control that takes input can be reached by a mnemonic of its own, and the
// Japanese window shows no text left in English.
#include "core/plugin_discovery.hpp"
#include "window/alert_box.hpp"
#include "window/history_cases.hpp"
#include "window/new_plugin_dialog.hpp"
#include "window/settings_dialog.hpp"
#include "window/ui_controller.hpp"
#include "window/window_translations.hpp"
#include "window/workbench.hpp"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QSplitter>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

#include <algorithm>
#include <map>
#include <memory>

using namespace qiro_plugin;
using namespace qiro_plugin::debugger;

namespace {

QString mnemonic_of(const QString& a_text) {
    return QKeySequence::mnemonic(a_text).toString();
}

bool has_ancestor_of_kind(const QWidget* a_widget, const QWidget* a_top,
                          bool (*a_kind)(const QWidget*)) {
    for (const QWidget* up = a_widget->parentWidget(); up != nullptr && up != a_top;
         up = up->parentWidget()) {
        if (a_kind(up)) {
            return true;
        }
    }
    return false;
}

// One scope of mnemonics as Qt resolves them: what a window shows at one time, or one menu.
struct mnemonic_scope {
    QString name;
    std::map<QString, QStringList> owners; // mnemonic -> the texts that claim it
    QStringList without;                   // controls that take input and have none

    void claim(const QString& a_text) {
        if (const QString key = mnemonic_of(a_text); !key.isEmpty()) {
            owners[key] << a_text;
        }
    }
    QStringList problems() const {
        QStringList found;
        for (const auto& [key, texts] : owners) {
            if (texts.size() > 1) {
                found << name + QStringLiteral(": ") + key + QStringLiteral(" is claimed by ") +
                             texts.join(QStringLiteral(", "));
            }
        }
        for (const QString& control : without) {
            found << name + QStringLiteral(": no mnemonic for ") + control;
        }
        return found;
    }
};

// The controls of a_top visible now, with the labels, buttons and tabs that claim mnemonics.
mnemonic_scope widget_scope(const QString& a_name, QWidget* a_top) {
    mnemonic_scope scope{a_name, {}, {}};
    std::map<const QWidget*, QString> reached; // control -> the text that reaches it
    const auto visible = [a_top](const QWidget* a_widget) {
        return a_widget->isVisibleTo(a_top) && a_widget->window() == a_top;
    };
    for (QTabBar* bar : a_top->findChildren<QTabBar*>()) {
        if (!visible(bar)) {
            continue;
        }
        const auto* tabs = qobject_cast<QTabWidget*>(bar->parentWidget());
        for (int index = 0; index < bar->count(); ++index) {
            scope.claim(bar->tabText(index));
            if (mnemonic_of(bar->tabText(index)).isEmpty()) {
                scope.without << QStringLiteral("the tab ") + bar->tabText(index);
            } else if (tabs != nullptr) {
                // A tab's mnemonic brings its page, whose views are then a Tab key away.
                for (QWidget* inside : tabs->widget(index)->findChildren<QWidget*>()) {
                    reached[inside] = bar->tabText(index);
                }
            }
        }
    }
    if (auto* window = qobject_cast<QMainWindow*>(a_top); window != nullptr) {
        for (QAction* menu : window->menuBar()->actions()) {
            scope.claim(menu->text());
        }
    }
    for (QLabel* label : a_top->findChildren<QLabel*>()) {
        if (visible(label) && label->buddy() != nullptr) {
            scope.claim(label->text());
            if (!mnemonic_of(label->text()).isEmpty()) {
                reached[label->buddy()] = label->text();
            }
        }
    }
    const auto inside_compound = [](const QWidget* a_widget) {
        return qobject_cast<const QComboBox*>(a_widget) != nullptr ||
               qobject_cast<const QAbstractSpinBox*>(a_widget) != nullptr ||
               qobject_cast<const QTabBar*>(a_widget) != nullptr ||
               qobject_cast<const QDialogButtonBox*>(a_widget) != nullptr;
    };
    for (QWidget* control : a_top->findChildren<QWidget*>()) {
        if (!visible(control) || has_ancestor_of_kind(control, a_top, inside_compound)) {
            continue;
        }
        QString described;
        bool takes_input = true;
        if (auto* button = qobject_cast<QAbstractButton*>(control)) {
            scope.claim(button->text());
            if (!mnemonic_of(button->text()).isEmpty()) {
                continue;
            }
            described = QStringLiteral("the button ") + button->text();
        } else if (qobject_cast<QComboBox*>(control) || qobject_cast<QLineEdit*>(control) ||
                   qobject_cast<QAbstractSpinBox*>(control) ||
                   (qobject_cast<QAbstractItemView*>(control) &&
                    !qobject_cast<QHeaderView*>(control))) {
            described = QString::fromLatin1(control->metaObject()->className()) + QLatin1Char(' ') +
                        control->objectName();
        } else {
            takes_input = false;
        }
        if (takes_input && !reached.contains(control)) {
            scope.without << described;
        }
    }
    return scope;
}

void add_menu_scopes(QMenu* a_menu, const QString& a_path, QList<mnemonic_scope>& a_scopes) {
    mnemonic_scope scope{a_path, {}, {}};
    for (QAction* action : a_menu->actions()) {
        if (action->isSeparator() || !action->isVisible()) {
            continue;
        }
        scope.claim(action->text());
        if (mnemonic_of(action->text()).isEmpty()) {
            scope.without << action->text();
        }
        if (action->menu() != nullptr) {
            add_menu_scopes(action->menu(), a_path + QStringLiteral(" › ") + action->text(),
                            a_scopes);
        }
    }
    a_scopes << scope;
}

// A text a Japanese user would read as left in English: not one Japanese character, and a word
// of Latin letters that is not a name (of a key, a file, a format).
bool reads_as_english(const QString& a_text) {
    static const QRegularExpression japanese(
        QStringLiteral("[\\x{3000}-\\x{30FF}\\x{4E00}-\\x{9FFF}\\x{FF00}-\\x{FFEF}]"));
    static const QRegularExpression word(QStringLiteral("[A-Za-z_]{2,}"));
    static const QStringList names{QStringLiteral("README"), QStringLiteral("Shift"),
                                   QStringLiteral("Ctrl"), QStringLiteral("Option"),
                                   QStringLiteral("my_plugin")};
    if (japanese.match(a_text).hasMatch()) {
        return false;
    }
    // A path (a recent folder) is shown as it is written.
    QString shown = a_text;
    shown.remove(QRegularExpression(QStringLiteral("/\\S*")));
    for (auto found = word.globalMatch(shown); found.hasNext();) {
        if (!names.contains(found.next().captured())) {
            return true;
        }
    }
    return false;
}

// Every text of a_top a user can read: labels, buttons, tabs, headers, placeholders, tooltips,
// menus (the context menus Qt makes included).
QStringList readable_texts(QWidget* a_top) {
    QStringList texts;
    const auto add_actions = [&texts](const QList<QAction*>& a_actions, auto& a_self) -> void {
        for (QAction* action : a_actions) {
            texts << action->text() << action->toolTip();
            if (action->menu() != nullptr) {
                a_self(action->menu()->actions(), a_self);
            }
        }
    };
    QList<QWidget*> widgets = a_top->findChildren<QWidget*>();
    widgets << a_top;
    for (QWidget* widget : widgets) {
        texts << widget->toolTip() << widget->windowTitle();
        if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
            texts << button->text();
        } else if (auto* label = qobject_cast<QLabel*>(widget)) {
            texts << label->text();
        } else if (auto* line = qobject_cast<QLineEdit*>(widget)) {
            texts << line->placeholderText();
        } else if (auto* plain = qobject_cast<QPlainTextEdit*>(widget)) {
            texts << plain->toPlainText() << plain->placeholderText();
            std::unique_ptr<QMenu> menu(plain->createStandardContextMenu());
            add_actions(menu->actions(), add_actions);
        } else if (auto* bar = qobject_cast<QTabBar*>(widget)) {
            for (int index = 0; index < bar->count(); ++index) {
                texts << bar->tabText(index) << bar->tabToolTip(index);
            }
        } else if (auto* tree = qobject_cast<QTreeWidget*>(widget)) {
            for (int column = 0; column < tree->columnCount(); ++column) {
                texts << tree->headerItem()->text(column);
            }
        } else if (auto* table = qobject_cast<QTableWidget*>(widget)) {
            for (int column = 0; column < table->columnCount(); ++column) {
                if (const auto* item = table->horizontalHeaderItem(column)) {
                    texts << item->text();
                }
            }
        }
        add_actions(widget->actions(), add_actions);
    }
    texts.removeAll(QString());
    texts.removeDuplicates();
    return texts;
}

} // namespace

class window_texts_test : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_home;
    workbench* m_bench = nullptr;

    ui_controller& controller() { return ui_controller::getInstance(); }
    QMainWindow* window() { return controller().window(); }

private slots:
    void initTestCase() {
        QVERIFY(m_home.isValid());
        qputenv("HOME", m_home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", m_home.filePath(QStringLiteral("config")).toUtf8());
        qputenv("QIRO_MACHINE_PREFERENCES_DIR",
                m_home.filePath(QStringLiteral("machine")).toUtf8());
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        const bool japanese = qgetenv("QIRO_TEST_LANGUAGE") == "ja";
        install_window_translations(*qApp,
                                    QLocale(japanese ? QLocale::Japanese : QLocale::English));
        set_alert_function([](QWidget*, const QString&) {});
        // Everything is made in the language, as at a real start.
        m_bench = new workbench(controller());
        add_cases_tab(controller(), *m_bench);
        start_options options;
        options.plugin_folder = QStringLiteral(QIRO_SAMPLE_PLUGIN_DIR);
        options.restore_state = false;
        m_bench->start(options);
        QTRY_VERIFY(controller().menu_model().selected_plugin().has_value());
    }

    // The first window after a run of a sample shows its whole status line.
    void the_first_window_shows_a_runs_whole_summary() {
        auto* menu =
            window()->findChild<QComboBox*>(QStringLiteral("m_loaded_plusins_popup_button"));
        const int sample = menu->findText(QStringLiteral("sample_python.py"));
        QVERIFY(sample >= 0);
        menu->setCurrentIndex(sample);
        emit menu->activated(sample);
        window()
            ->findChild<QLineEdit*>(QStringLiteral("m_hyoki_text_field"))
            ->setText(QStringLiteral("変換"));
        controller().run_debug();
        QStatusBar* status = window()->statusBar();
        const QString summary = status->currentMessage();
        QVERIFY(summary.contains(QStringLiteral("sample_python.py")));
        QVERIFY2(status->fontMetrics().horizontalAdvance(summary) < status->width(),
                 qPrintable(summary));
        // The output panes get the room at first: the diagnosis list is a few rows high.
        const auto* splitter = window()->findChild<QSplitter*>(QStringLiteral("m_main_splitter"));
        const auto* output =
            window()->findChild<QPlainTextEdit*>(QStringLiteral("m_std_output_text_view"));
        const int lines = output->viewport()->height() / output->fontMetrics().lineSpacing();
        const QString sizes = QStringLiteral("window %1, splitter %2 / %3, %4 lines")
                                  .arg(window()->height())
                                  .arg(splitter->sizes().at(0))
                                  .arg(splitter->sizes().at(1))
                                  .arg(lines);
        QVERIFY2(splitter->sizes().at(1) * 4 < splitter->sizes().at(0), qPrintable(sizes));
        QVERIFY2(lines >= 15, qPrintable(sizes));
        if (const QByteArray folder = qgetenv("QIRO_SCREENSHOT_DIR"); !folder.isEmpty()) {
            QTest::qWait(200);
            QVERIFY(window()->grab().save(
                QString::fromLocal8Bit(folder) + QStringLiteral("/first-window-") +
                QString::fromLatin1(qgetenv("QIRO_TEST_LANGUAGE")) + QStringLiteral(".png")));
        }
    }

    void every_control_that_takes_input_has_a_mnemonic_of_its_own() {
        QList<mnemonic_scope> scopes;
        auto* tabs = window()->findChild<QTabWidget*>(QStringLiteral("m_result_tabs"));
        QVERIFY(tabs != nullptr);
        const int shown = tabs->currentIndex();
        for (int index = 0; index < tabs->count(); ++index) {
            tabs->setCurrentIndex(index);
            scopes << widget_scope(QStringLiteral("window with ") + tabs->tabText(index), window());
        }
        tabs->setCurrentIndex(shown);
        for (QAction* menu : window()->menuBar()->actions()) {
            add_menu_scopes(menu->menu(), menu->text(), scopes);
        }
        settings_dialog settings({QStringLiteral("sample_python.py")}, false, window());
        scopes << widget_scope(settings.windowTitle(), &settings);
        new_plugin_dialog creation(QStringLiteral("/tmp"), window());
        scopes << widget_scope(creation.windowTitle(), &creation);

        QStringList problems;
        for (const auto& scope : scopes) {
            problems << scope.problems();
        }
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(QLatin1Char('\n'))));
        // The walk sees what it is to judge: the window's own controls and the Cases tab's.
        QVERIFY(scopes.size() > 6);
        QVERIFY(std::any_of(scopes.begin(), scopes.end(), [](const mnemonic_scope& a_scope) {
            return a_scope.owners.size() > 20;
        }));
    }

    void the_japanese_window_shows_no_english_text() {
        if (qgetenv("QIRO_TEST_LANGUAGE") != "ja") {
            QSKIP("the window speaks English here");
        }
        QStringList texts = readable_texts(window());
        settings_dialog settings({QStringLiteral("sample_python.py")}, false, window());
        texts << readable_texts(&settings);
        new_plugin_dialog creation(QStringLiteral("/tmp"), window());
        texts << readable_texts(&creation);
        QStringList english;
        std::copy_if(texts.begin(), texts.end(), std::back_inserter(english), reads_as_english);
        QVERIFY2(english.isEmpty(), qPrintable(english.join(QLatin1Char('\n'))));
        // Qt's own texts are translated too, and the walk reached the Cases tab.
        QVERIFY(texts.contains(QStringLiteral("すべて実行(&A)")));
        QVERIFY(std::any_of(texts.begin(), texts.end(), [](const QString& a_text) {
            return a_text.startsWith(QStringLiteral("すべてを選択"));
        }));
    }
};

QTEST_MAIN(window_texts_test)
#include "window_texts_test.moc"
