#include "core/plugin_discovery.hpp"
#include "core/plugin_templates.hpp"
#include "settings/manager_preference_access.hpp"
#include "window/alert_box.hpp"
#include "window/candidate_preview.hpp"
#include "window/cases_tab.hpp"
#include "window/diagnosis_list.hpp"
#include "window/history_cases.hpp"
#include "window/history_panel.hpp"
#include "window/output_pane.hpp"
#include "window/qt_text.hpp"
#include "window/settings_dialog.hpp"
#include "window/stop_control.hpp"
#include "window/ui_controller.hpp"
#include "window/window_menus.hpp"
#include "window/window_state.hpp"
#include "window/window_translations.hpp"
#include "window/workbench.hpp"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QtTest>

#include <functional>
#include <memory>
#include <vector>

using namespace qiro_plugin;
using namespace qiro_plugin::debugger;

// Whether the process is still there and not a zombie waiting to be reaped.
static bool process_lives(int a_pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(a_pid));
    return stat.open(QIODevice::ReadOnly) && !stat.readAll().contains(") Z ");
}

class workbench_test : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_home;
    QTemporaryDir m_plugins;
    QStringList m_alerts;
    workbench* m_bench = nullptr;
    cases_tab* m_cases = nullptr;

    ui_controller& controller() { return ui_controller::getInstance(); }
    QMainWindow* window() { return controller().window(); }
    template <typename widget> widget* find(const char* a_name) {
        auto* found = window()->findChild<widget*>(QString::fromLatin1(a_name));
        if (found == nullptr) {
            qFatal("no control named %s", a_name);
        }
        return found;
    }
    QComboBox* menu() { return find<QComboBox>("m_loaded_plusins_popup_button"); }
    QLineEdit* written_form() { return find<QLineEdit>("m_hyoki_text_field"); }
    QLineEdit* reading() { return find<QLineEdit>("m_reading_text_field"); }
    output_pane* std_output() { return find<output_pane>("m_std_output_text_view"); }
    output_pane* std_error() { return find<output_pane>("m_std_error_output_text_view"); }
    QString status() { return window()->statusBar()->currentMessage(); }
    QString path(const QString& a_name) { return m_plugins.filePath(a_name); }
    // scripts/screenshot.sh takes the README's pictures from the tests' own windows.
    void screenshot(QWidget* a_widget, const char* a_name) {
        if (const QByteArray folder = qgetenv("QIRO_SCREENSHOT_DIR"); !folder.isEmpty()) {
            QVERIFY(a_widget->grab().save(QString::fromLocal8Bit(folder) + QLatin1Char('/') +
                                          QString::fromLatin1(a_name)));
        }
    }

    void write(const QString& a_name, const QByteArray& a_text) {
        QFile file(path(a_name));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(a_text);
    }
    void copy_sample(const QString& a_sample) {
        for (const QString& extension : {QStringLiteral(".xml"), QString()}) {
            QString name = a_sample;
            if (!extension.isEmpty()) {
                name = name.left(name.lastIndexOf(QLatin1Char('.'))) + extension;
            }
            QFile::remove(path(name));
            QVERIFY(QFile::copy(QStringLiteral(QIRO_SAMPLE_PLUGIN_DIR "/") + name, path(name)));
        }
    }
    void run_with(const QString& a_plugin, const QString& a_form, const QString& a_reading = {}) {
        QVERIFY(m_bench->select_plugin(a_plugin));
        written_form()->setText(a_form);
        reading()->setText(a_reading);
        QTest::keyClick(window(), Qt::Key_Return, Qt::ControlModifier);
    }

private slots:
    void initTestCase() {
        QVERIFY(m_home.isValid() && m_plugins.isValid());
        qputenv("HOME", m_home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", m_home.filePath(QStringLiteral("config")).toUtf8());
        qputenv("QIRO_MACHINE_PREFERENCES_DIR",
                m_home.filePath(QStringLiteral("machine")).toUtf8());
        qputenv("PATH", "/usr/bin:/bin:" + qgetenv("PATH"));
        qunsetenv("DBUS_SESSION_BUS_ADDRESS"); // no keyring for the settings dialog
        install_window_translations(*qApp, QLocale(QLocale::English));
        set_alert_function([this](QWidget*, const QString& a_title) { m_alerts << a_title; });
        copy_sample(QStringLiteral("sample_python.py"));
        m_bench = new workbench(controller());
        m_cases = add_cases_tab(controller(), *m_bench);
        start_options options;
        options.plugin_folder = m_plugins.path();
        options.restore_state = false;
        m_bench->start(options);
        QTRY_COMPARE(menu()->count(), 1);
        // Window shortcuts need the active window; under Xvfb it becomes active on request.
        window()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window()));
        QVERIFY(window()->windowTitle().endsWith(m_plugins.path() + QLatin1Char('/')));
    }

    void init() { m_alerts.clear(); }

    void preview_shows_candidates_comments_and_the_candidate_list() {
        run_with(QStringLiteral("sample_python.py"), QStringLiteral("変換"),
                 QStringLiteral("へんかん"));
        QTableWidget* table = m_bench->preview().table();
        QCOMPARE(table->rowCount(), 2);
        QCOMPARE(table->item(1, 0)->text(), QStringLiteral("「変換」"));
        QCOMPARE(table->item(1, 2)->text(), QStringLiteral("『変換』"));
        QCOMPARE(table->item(1, 3)->text(), QStringLiteral("definite_string"));
        QCOMPARE(table->item(1, 4)->text(), QStringLiteral("二重かぎ括弧"));
        QCOMPARE(table->item(1, 5)->text(), QStringLiteral("括弧付き"));
        // The comment is rendered from its XHTML: the heading, the line break, no markup; the
        // reading reached the request.
        const QString comment = m_bench->preview().comment_view()->toPlainText();
        QVERIFY2(comment.startsWith(QStringLiteral("変換\n")) &&
                     comment.contains(QStringLiteral("文字数: 2\n読み: へんかん")),
                 qPrintable(comment));
        QVERIFY(!comment.contains(QLatin1Char('<')));
        QVERIFY(m_bench->preview().document_view()->toPlainText().contains(
            QStringLiteral("<title>「変換」</title>")));
        QVERIFY(status().contains(QStringLiteral(": 2 candidates (")));
        m_bench->preview().table()->selectRow(0);
        find<QTabWidget>("m_result_tabs")->setCurrentIndex(1);
        screenshot(window(), "preview.png");
        find<QTabWidget>("m_result_tabs")->setCurrentIndex(0);

        // An empty reading leaves it out of the request.
        run_with(QStringLiteral("sample_python.py"), QStringLiteral("変換"));
        QVERIFY(!m_bench->preview().comment_view()->toPlainText().contains(QStringLiteral("読み")));

        // Nothing a comment names is loaded, not even a local file.
        const QString image = QStringLiteral(QIRO_SAMPLE_PLUGIN_DIR "/../docs/preview.png");
        QVERIFY(QFile::exists(image));
        write("sealed.py", "def qiro_plugin_run_process(request):\n"
                           "    return {'candidate': [{'hyoki': 'x', 'comment_xhtml': "
                           "'<p>before<img src=\"file://" +
                               image.toUtf8() + "\"/>after</p>'}]}\n");
        m_bench->open_folder(m_plugins.path());
        run_with(QStringLiteral("sealed.py"), QStringLiteral("x"));
        QTextBrowser* view = m_bench->preview().comment_view();
        QVERIFY(view->toPlainText().contains(QStringLiteral("before")));
        view->grab(); // lay it out, which is when images are asked for
        QVERIFY(
            view->document()
                ->resource(QTextDocument::ImageResource, QUrl(QStringLiteral("file://") + image))
                .isNull());
        QVERIFY(m_alerts.isEmpty());
    }

    void callback_and_preference_follow_the_companion_document() {
        auto* callback = find<QPushButton>("m_callback_button");
        auto* preference = find<QPushButton>("m_preference_button");
        QVERIFY(!callback->isEnabled() && !preference->isEnabled()); // sealed.py has no .xml

        run_with(QStringLiteral("sample_python.py"), QStringLiteral("変換"));
        QVERIFY(callback->isEnabled() && preference->isEnabled());
        m_bench->preview().table()->selectRow(1);
        QTest::mouseClick(callback, Qt::LeftButton);
        QVERIFY2(std_output()->exact_text().contains(
                     QStringLiteral("committed: 「変換」 (searched for 変換)")),
                 qPrintable(std_output()->exact_text()));
        QTest::mouseClick(preference, Qt::LeftButton);
        QVERIFY(std_error()->exact_text().contains(QStringLiteral("settings folder: ")));
        QCOMPARE(m_bench->history().history().entries().front().entry, std::string("preference"));
        QVERIFY(m_alerts.isEmpty());
    }

    void stop_ends_a_hanging_run_while_other_input_waits() {
        // The entry says when it has written both outputs and starts to hang.
        const QByteArray hanging = path(QStringLiteral("hanging")).toUtf8();
        write("hang.py", "import sys, time\n"
                         "def qiro_plugin_run_process(request):\n"
                         "    print('before the stop', flush=True)\n"
                         "    print('on error', file=sys.stderr, flush=True)\n"
                         "    open('" +
                             hanging +
                             "', 'w').close()\n"
                             "    time.sleep(60)\n"
                             "    return {'candidate': []}\n");
        m_bench->open_folder(m_plugins.path());
        QTimer poll;
        QElapsedTimer clock;
        auto* live = find<QPlainTextEdit>("live_std_error");
        bool live_seen = false;
        QString output_before_stop;
        QString error_before_stop;
        connect(&poll, &QTimer::timeout, this, [&] {
            if (!QFile::exists(QString::fromUtf8(hanging))) {
                return;
            }
            // What the entry wrote on standard error shows while it runs, apart from the panes.
            live_seen = live->isVisible() && live->toPlainText() == QStringLiteral("on error");
            if (!live_seen && clock.elapsed() < 20000) {
                return;
            }
            poll.stop();
            output_before_stop = std_output()->exact_text();
            error_before_stop = std_error()->exact_text();
            QVERIFY(m_bench->stopper().is_running());
            QTest::keyClicks(reading(), QStringLiteral("y")); // held until the run ends
            QCOMPARE(reading()->text(), QString());
            QTest::keyClick(window(), Qt::Key_Escape);
        });
        poll.start(20);
        clock.start();
        run_with(QStringLiteral("hang.py"), QStringLiteral("x"));
        QVERIFY(live_seen);
        QVERIFY2(clock.elapsed() < 30000, "the run went on to the time-out");
        QVERIFY(!m_bench->stopper().is_running());
        QVERIFY(status().contains(QStringLiteral("hang.py was stopped.")));
        QVERIFY(find<QLabel>("m_elapsed_label")->text().endsWith(QStringLiteral("stopped")));
        // The panes keep the syntax check's outputs, once, and nothing of the stopped entry;
        // the diagnosis tells what standard error had until then.
        QCOMPARE(std_output()->exact_text(), output_before_stop);
        QCOMPARE(std_error()->exact_text(), error_before_stop);
        QCOMPARE(output_before_stop.count(QStringLiteral("syntax ok")), 1);
        QVERIFY(!live->isVisible());
        const QTreeWidgetItem* finding = controller().diagnosis_view()->tree()->topLevelItem(0);
        QVERIFY(finding != nullptr);
        QVERIFY(finding->text(0).startsWith(QStringLiteral("The run was stopped after")));
        QVERIFY(finding->toolTip(0).contains(QStringLiteral("on error")));
        // History says the run was stopped, after as long as the label and the finding say.
        const QString seconds =
            find<QLabel>("m_elapsed_label")->text().section(QLatin1Char(' '), 0, 0);
        QVERIFY(finding->text(0).contains(seconds));
        const QString recorded = find<QListWidget>("m_history_list")->item(0)->text();
        QVERIFY2(
            recorded.endsWith(QStringLiteral(": stopped after ") + seconds + QStringLiteral(" s")),
            qPrintable(recorded));
        QTRY_COMPARE(reading()->text(), QStringLiteral("y"));
        QVERIFY(m_alerts.isEmpty());
    }

    void debug_waits_for_a_debugger_offers_its_configuration_and_stop_ends_it() {
        copy_sample(QStringLiteral("sample_python.py"));
        m_bench->open_folder(m_plugins.path());
        bool waited = false;
        // The run blocks this thread: look for the waiting line from the event loop it turns.
        std::function<void()> when_waiting = [&] {
            if (!status().startsWith(QStringLiteral("Waiting for a debugger on 127.0.0.1:"))) {
                QTimer::singleShot(50, this, when_waiting);
                return;
            }
            QVERIFY(m_bench->menus().copy_attach->isEnabled());
            m_bench->menus().copy_attach->trigger();
            QVERIFY(QGuiApplication::clipboard()->text().contains(QStringLiteral("debugpy")));
            waited = true;
            QTest::keyClick(window(), Qt::Key_Escape);
        };
        QTimer::singleShot(0, this, when_waiting);
        QVERIFY(m_bench->select_plugin(QStringLiteral("sample_python.py")));
        written_form()->setText(QStringLiteral("変換"));
        QTest::keyClick(window(), Qt::Key_F6);
        QVERIFY(waited);
        QVERIFY(!m_bench->stopper().is_running());
        QVERIFY(!m_bench->menus().copy_attach->isEnabled());
        QVERIFY(status().contains(QStringLiteral("was stopped")));
        const QDir data(m_home.filePath(QStringLiteral("Library/Preferences/QIRO Lumen")));
        QCOMPARE(data.entryList({QStringLiteral("qiro-lumen-debug-*")}, QDir::AllEntries),
                 QStringList());
    }

    // A real press reaches the top-level window before any widget: under X it comes from the
    // server (xdotool), elsewhere through the window system interface.
    void a_press_on_stop_through_the_window_ends_the_run() {
        write("sleeping.py", "import os, time\n"
                             "def qiro_plugin_run_process(request):\n"
                             "    with open(os.environ['HOME'] + '/sleeping.pid', 'w') as f:\n"
                             "        f.write(str(os.getpid()))\n"
                             "    time.sleep(60)\n"
                             "    return {'candidate': []}\n");
        m_bench->open_folder(m_plugins.path());
        QFile pid_file(m_home.filePath(QStringLiteral("sleeping.pid")));
        pid_file.remove();
        const auto centre = [this](QWidget* a_widget) {
            return a_widget->mapTo(window(), a_widget->rect().center());
        };
        QObject scope;
        bool reading_had_focus_at_stop = true;
        connect(&m_bench->stopper(), &stop_control::stopped, &scope,
                [&] { reading_had_focus_at_stop = reading()->hasFocus(); });
        // Once the plug-in sleeps: a press on the reading field, which is to wait for the run's
        // end, then one on Stop.
        QTimer poll;
        connect(&poll, &QTimer::timeout, &scope, [&] {
            if (!pid_file.exists()) {
                return;
            }
            poll.stop();
            const QList<QPoint> points{centre(reading()),
                                       centre(find<QPushButton>("m_stop_button"))};
            if (QGuiApplication::platformName() != QLatin1String("xcb")) {
                for (const QPoint& point : points) {
                    QTest::mouseClick(window()->windowHandle(), Qt::LeftButton, {}, point);
                }
                return;
            }
            QStringList arguments;
            for (const QPoint& point : points) {
                const QPoint global = window()->mapToGlobal(point);
                arguments << QStringLiteral("mousemove") << QStringLiteral("--sync")
                          << QString::number(global.x()) << QString::number(global.y())
                          << QStringLiteral("click") << QStringLiteral("1");
            }
            QVERIFY(QProcess::startDetached(QStringLiteral("xdotool"), arguments));
        });
        poll.start(20);
        written_form()->setFocus();
        run_with(QStringLiteral("sleeping.py"), QStringLiteral("x"));
        QVERIFY(m_bench->stopper().was_stopped());
        QVERIFY(status().contains(QStringLiteral("sleeping.py was stopped.")));
        QVERIFY(!reading_had_focus_at_stop);
        QTRY_VERIFY(reading()->hasFocus());
        // The plug-in's process is gone (at most a zombie left for its new parent to reap).
        QVERIFY(pid_file.open(QIODevice::ReadOnly));
        const int pid = pid_file.readAll().toInt();
        QVERIFY(pid > 0);
        QTRY_VERIFY_WITH_TIMEOUT(!process_lives(pid), 10000);
        QVERIFY(m_alerts.isEmpty());
    }

    void panes_stay_exact_with_long_lines_and_large_output() {
        controller().clear_std_error_output_text();
        const utf16_string long_line(2 * 1024 * 1024 + 5, u'a');
        // As a run hands it over, in UTF-8: characters of two, three and four bytes and CR LF
        // (46 bytes a line) fall across the pane's slices, and a leading byte-order mark is kept.
        std::string many_lines = "\xEF\xBB\xBF";
        for (int line = 0; line < 60000; ++line) {
            many_lines += "a line of plug-in output now: \xC3\xA9 変換 \xF0\x9F\x98\x80\r\n";
        }
        QVERIFY_THROWS_EXCEPTION(std::runtime_error,
                                 controller().add_std_error_output_utf8(many_lines + "\xC3"));
        controller().add_std_error_output_text(long_line);
        controller().add_std_error_output_utf8(many_lines);
        output_pane* pane = std_error();
        const QString exact = QString(long_line.size(), QLatin1Char('a')) + QLatin1Char('\n') +
                              QChar(0xFEFF) + QString::fromUtf8(many_lines.substr(3)) +
                              QLatin1Char('\n');
        QCOMPARE(pane->exact_text(), exact);
        QVERIFY(pane->is_showing());
        QTRY_VERIFY_WITH_TIMEOUT(!pane->is_showing(), 60000);
        // Shown broken into blocks, the rest of the line as a note; copied and saved whole.
        QVERIFY(pane->document()->firstBlock().length() <= output_pane::display_line_limit + 1);
        const QString shown = pane->toPlainText();
        QVERIFY(shown.contains(QStringLiteral("[… %1 more characters on this line]")
                                   .arg(long_line.size() - output_pane::line_display_limit)));
        QVERIFY(shown.contains(QString::fromUtf8(many_lines.substr(3))
                                   .replace(QStringLiteral("\r\n"), QStringLiteral("\n"))));
        pane->selectAll();
        pane->copy();
        QCOMPARE(QApplication::clipboard()->text(), exact);
        QTextCursor across(pane->document());
        across.setPosition(output_pane::display_line_limit - 3);
        across.setPosition(output_pane::display_line_limit + 4, QTextCursor::KeepAnchor);
        pane->setTextCursor(across);
        pane->copy();
        QCOMPARE(QApplication::clipboard()->text(), QString(6, QLatin1Char('a')));
        const QString saved = m_home.filePath(QStringLiteral("saved.txt"));
        QVERIFY(pane->save_to_file(saved));
        QFile file(saved);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), exact.toUtf8());
        QVERIFY(!pane->save_to_file(m_home.filePath(QStringLiteral("no/such/folder/x.txt"))));

        // Past what the pane shows, the note counts the rest in characters, not bytes.
        controller().clear_std_error_output_text();
        std::string flood;
        for (int line = 0; line < 700000; ++line) {
            flood += "\xF0\x9F\x98\x80\xF0\x9F\x98\x80 \xE5\xA4\x89\xC3\xA9\n"; // 8 units
        }
        controller().add_std_error_output_utf8(flood);
        QTRY_VERIFY_WITH_TIMEOUT(!pane->is_showing(), 60000);
        const QString all = pane->toPlainText();
        const qsizetype note = all.lastIndexOf(QStringLiteral("\n[… "));
        const qsizetype hidden = all.mid(note + 4).section(QLatin1Char(' '), 0, 0).toLongLong();
        QVERIFY2(note > 0 && hidden > 0, qPrintable(all.mid(note, 120)));
        QCOMPARE(note + hidden, 700000 * 8 + 2); // what is shown, the rest, and CR LF
        controller().clear_std_error_output_text();
    }

    void watch_reloads_the_menu_and_reruns_on_save() {
        const int before = menu()->count();
        copy_sample(QStringLiteral("sample_ruby.rb"));
        QTRY_COMPARE(menu()->count(), before + 1);
        QVERIFY(QFile::rename(path(QStringLiteral("hang.py")), path(QStringLiteral("zz.py"))));
        QTRY_COMPARE(menu()->findText(QStringLiteral("zz.py")), menu()->count() - 1);

        write("edited.py", "def qiro_plugin_run_process(request):\n"
                           "    return {'candidate': [{'hyoki': 'first'}]}\n");
        QTRY_VERIFY(menu()->findText(QStringLiteral("edited.py")) >= 0);
        run_with(QStringLiteral("edited.py"), QStringLiteral("x"));
        QCOMPARE(m_bench->preview().table()->item(0, 0)->text(), QStringLiteral("first"));
        // The run, kept by the history, becomes a case of the plug-in.
        QListWidget* history = m_bench->history().list();
        history->setCurrentRow(0);
        QTimer::singleShot(0, this, [] {
            auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog != nullptr);
            QCOMPARE(dialog->textValue(), QStringLiteral("x"));
            dialog->setTextValue(QStringLiteral("offers first"));
            dialog->accept();
        });
        history->actions().front()->trigger();
        window()->activateWindow(); // after the dialog, for the window's shortcuts
        QVERIFY(QTest::qWaitForWindowActive(window()));
        QVERIFY(QFile::exists(path(QStringLiteral("edited.cases.json"))));
        QCOMPARE(m_cases->case_list()->topLevelItemCount(), 1);
        QCOMPARE(m_cases->case_list()->topLevelItem(0)->text(0), QStringLiteral("offers first"));

        // Run on save re-runs the plug-in, then its cases, which see the change.
        m_bench->menus().run_on_save->setChecked(true);
        QSignalSpy cases_run(m_cases, &cases_tab::cases_finished);
        write("edited.py", "def qiro_plugin_run_process(request):\n"
                           "    return {'candidate': [{'hyoki': 'second'}]}\n");
        QTRY_COMPARE(m_bench->preview().table()->item(0, 0)->text(), QStringLiteral("second"));
        QCOMPARE(menu()->currentText(), QStringLiteral("edited.py"));
        QTRY_COMPARE(cases_run.count(), 1);
        QCOMPARE(m_cases->case_list()->topLevelItem(0)->text(2), QStringLiteral("FAIL"));
        m_bench->menus().run_on_save->setChecked(false);
    }

    void history_shows_a_run_again_and_compares_two() {
        const auto& entries = m_bench->history().history().entries();
        QVERIFY(entries.size() >= 5);
        QListWidget* list = m_bench->history().list();
        QCOMPARE(list->count(), static_cast<int>(entries.size()));
        QVERIFY(list->item(0)->text().contains(QStringLiteral("edited.py “x”: 1 candidate (")));
        list->setCurrentRow(1); // the run that offered "first"
        QCOMPARE(m_bench->preview().table()->item(0, 0)->text(), QStringLiteral("first"));
        list->item(0)->setSelected(true);
        const QString difference = m_bench->history().details()->toPlainText();
        QVERIFY2(difference.contains(QStringLiteral("− first")) &&
                     difference.contains(QStringLiteral("+ second")),
                 qPrintable(difference));
    }

    void new_plugins_come_from_templates_and_avoid_unwritable_folders() {
        QVERIFY(
            m_bench
                ->create_plugin(static_cast<int>(template_language::ruby), QStringLiteral("fresh"))
                .isEmpty());
        QCOMPARE(menu()->currentText(), QStringLiteral("fresh.rb"));
        QVERIFY(QFile::exists(path(QStringLiteral("fresh.xml"))));
        QVERIFY(
            !m_bench
                 ->create_plugin(static_cast<int>(template_language::ruby), QStringLiteral("fresh"))
                 .isEmpty());
        // A run that is refused clears the summary of the earlier one.
        written_form()->setText(QStringLiteral("新"));
        QTest::keyClick(window(), Qt::Key_Return, Qt::ControlModifier);
        QVERIFY2(status().startsWith(QStringLiteral("fresh.rb ran as Ruby: 1 candidate (")),
                 qPrintable(status()));
        written_form()->clear();
        QTest::keyClick(window(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(status(), QString());
        QCOMPARE(m_alerts.size(), 1);

        QTemporaryDir other;
        m_bench->open_folder(QStringLiteral("/proc/self"));
        int asked = 0;
        m_bench->set_folder_question([&] {
            ++asked;
            return other.path();
        });
        QVERIFY(m_bench
                    ->create_plugin(static_cast<int>(template_language::perl),
                                    QStringLiteral("elsewhere"))
                    .isEmpty());
        QCOMPARE(asked, 1);
        QCOMPARE(m_bench->folder_path(), other.path() + QLatin1Char('/'));
        QCOMPARE(menu()->currentText(), QStringLiteral("elsewhere.pl"));
        m_bench->open_folder(m_plugins.path());
    }

    void settings_dialog_writes_the_manager_settings_without_a_keyring() {
        settings_dialog dialog({QStringLiteral("sample_python.py")}, false, window());
        QVERIFY(dialog.keyring_notice()->text().startsWith(QStringLiteral("No keyring")));
        dialog.findChild<QCheckBox*>()->setChecked(false); // show candidates automatically
        auto checks = dialog.findChildren<QCheckBox*>();
        for (QCheckBox* check : checks) {
            if (check->text().contains(QStringLiteral("proxy")) ||
                check->text().contains(QStringLiteral("user"))) {
                check->setChecked(true);
            }
        }
        auto* address = dialog.findChild<QLineEdit*>(QStringLiteral("m_proxy_address"));
        QVERIFY(address->isEnabled());
        address->setText(QStringLiteral("proxy.example"));
        dialog.findChild<QSpinBox*>(QStringLiteral("m_proxy_port"))->setValue(8080);
        auto* user = dialog.findChild<QLineEdit*>(QStringLiteral("m_proxy_username"));
        QVERIFY(user->isEnabled());
        user->setText(QStringLiteral("me"));
        QVERIFY(!dialog.findChild<QLineEdit*>(QStringLiteral("m_proxy_password"))->isEnabled());
        dialog.findChild<QComboBox*>(QStringLiteral("m_plugin_key_1"))->setCurrentIndex(1);
        // The last key that can be assigned without modifiers.
        auto* key = dialog.findChild<QComboBox*>(QStringLiteral("m_change_key"));
        int chosen = key->count() - 1;
        for (key->setCurrentIndex(chosen); !dialog.edited_data(); key->setCurrentIndex(--chosen)) {
        }
        QVERIFY(chosen > 0);
        dialog.show();
        screenshot(&dialog, "settings-dialog.png");
        QVERIFY(dialog.save());

        const auto saved = manager_preference_access::read_manager_preference();
        QCOMPARE(saved.enable_proxy, 1u);
        QVERIFY(saved.proxy_address == u"proxy.example");
        QCOMPARE(saved.proxy_port, 8080u);
        QCOMPARE(saved.enable_authentication, 1u);
        QVERIFY(saved.proxy_username == u"me");
        QVERIFY(saved.key_1_plugin_name == u"sample_python.py");
        QCOMPARE(saved.automatically_displayed_candidate, 0u);
        // Made again, the dialog shows what was saved.
        settings_dialog again({}, false, window());
        QCOMPARE(again.findChild<QComboBox*>(QStringLiteral("m_change_key"))->currentIndex(),
                 chosen);
        QCOMPARE(again.edited_data().value(), saved);
    }

    void new_texts_have_japanese_and_english_plural_forms() {
        const auto text = [](const char* a_context, const char* a_source, int a_count = -1) {
            return QCoreApplication::translate(a_context, a_source, nullptr, a_count);
        };
        const char* summary = "%1 ran as %2: %n candidate(s) (syntax check %3 ms, run %4 ms).";
        QCOMPARE(text("qiro_plugin::debugger::ui_controller", summary, 1),
                 QStringLiteral("%1 ran as %2: 1 candidate (syntax check %3 ms, run %4 ms)."));
        install_window_translations(*qApp, QLocale(QLocale::Japanese));
        QCOMPARE(text("window_menus", "&Quit"), QStringLiteral("終了(&Q)"));
        QCOMPARE(text("qiro_plugin::debugger::history_panel", "%n candidate(s)", 3),
                 QStringLiteral("候補 3 件"));
        QCOMPARE(text("qiro_plugin::debugger::stop_control", "%1 s"), QStringLiteral("%1 秒"));
        install_window_translations(*qApp, QLocale(QLocale::English));
    }

    void stop_ends_running_cases_as_stopped_and_leaves_nothing_behind() {
        write("slow.py",
              "import os, time\n"
              "def qiro_plugin_run_process(request):\n"
              "    path = os.environ['HOME'] + '/slow.' + request['composition_string']\n"
              "    with open(path, 'w') as f:\n"
              "        f.write(str(os.getpid()))\n"
              "    time.sleep(60)\n"
              "    return {'candidate': []}\n");
        write("slow.cases.json", R"({"cases": [{"name": "one", "written_form": "a"},
                                               {"name": "two", "written_form": "b"},
                                               {"name": "three", "written_form": "c"}]})");
        m_bench->open_folder(m_plugins.path());
        QVERIFY(m_bench->select_plugin(QStringLiteral("slow.py")));
        QTreeWidget* list = m_cases->case_list();
        QCOMPARE(list->topLevelItemCount(), 3);
        const QString first_pid = m_home.filePath(QStringLiteral("slow.a"));
        QObject scope;
        QTimer poll;
        connect(&poll, &QTimer::timeout, &scope, [&] {
            if (QFile::exists(first_pid)) {
                poll.stop();
                QVERIFY(find<QPushButton>("m_stop_button")->isEnabled());
                QTest::keyClick(window(), Qt::Key_Escape);
            }
        });
        poll.start(20);
        QElapsedTimer clock;
        clock.start();
        m_cases->run_all();
        QVERIFY2(clock.elapsed() < 30000, "the cases went on to the time-out");
        for (int row = 0; row < 3; ++row) {
            QCOMPARE(list->topLevelItem(row)->text(2), QStringLiteral("stopped"));
        }
        QVERIFY(!find<QPushButton>("m_stop_button")->isEnabled());
        // No plug-in process and no bridge file outlive the stop.
        const QStringList started = QDir(m_home.path()).entryList({QStringLiteral("slow.*")});
        QVERIFY(!started.isEmpty());
        for (const QString& name : started) {
            QFile pid_file(m_home.filePath(name));
            QVERIFY(pid_file.open(QIODevice::ReadOnly));
            const int pid = pid_file.readAll().toInt();
            QVERIFY(pid > 0);
            QTRY_VERIFY_WITH_TIMEOUT(!process_lives(pid), 10000);
        }
        const QDir data(m_home.filePath(QStringLiteral("Library/Preferences/QIRO Lumen")));
        QCOMPARE(data.entryList({QStringLiteral("*.py")}, QDir::Files), QStringList());
        QFile::remove(path(QStringLiteral("slow.py")));
        QFile::remove(path(QStringLiteral("slow.cases.json")));
        m_bench->open_folder(m_plugins.path());
    }

    void the_window_starts_on_its_folder_and_reopens_recent_ones_in_one_click() {
        QMenu* recent = window()->findChild<QMenu*>(QStringLiteral("menu_open_recent"));
        QVERIFY(recent != nullptr);
        const auto shown = [recent] {
            QStringList folders;
            for (const QAction* item : recent->actions()) {
                folders << item->text().section(QLatin1Char(' '), 1);
            }
            return folders;
        };
        std::vector<std::unique_ptr<QTemporaryDir>> folders;
        for (int index = 0; index < 6; ++index) {
            folders.push_back(std::make_unique<QTemporaryDir>());
            m_bench->open_folder(folders.back()->path());
        }
        const auto slashed = [](const QTemporaryDir& a_dir) {
            return a_dir.path() + QLatin1Char('/');
        };
        // The last five, the most recent first.
        QCOMPARE(shown(),
                 (QStringList{slashed(*folders[5]), slashed(*folders[4]), slashed(*folders[3]),
                              slashed(*folders[2]), slashed(*folders[1])}));
        QVERIFY(recent->actions().front()->text().startsWith(QStringLiteral("&1 ")));
        // Opened again, a folder moves to the top once; a folder gone is shown disabled.
        m_bench->open_folder(folders[3]->path());
        QCOMPARE(shown().first(), slashed(*folders[3]));
        QCOMPARE(shown().count(slashed(*folders[3])), 1);
        folders[4]->remove();
        m_bench->open_folder(folders[3]->path());
        const int gone = static_cast<int>(shown().indexOf(slashed(*folders[4])));
        QVERIFY(gone > 0 && !recent->actions().at(gone)->isEnabled());
        // One click goes back.
        recent->actions().at(1)->trigger();
        QCOMPARE(m_bench->folder_path(), slashed(*folders[5]));

        // A new start lists the plugin folder beside the program, not the last one opened,
        // unless --plugin-folder names another.
        m_bench->save_state();
        start_options options;
        m_bench->start(options);
        QCOMPARE(m_bench->folder_path(), to_qstring(default_plugin_folder()));
        QCOMPARE(shown().first(), to_qstring(default_plugin_folder()));
        options.plugin_folder = m_plugins.path();
        options.restore_state = false;
        m_bench->start(options);
        QCOMPARE(m_bench->folder_path(), slashed(m_plugins));
        QCoreApplication::processEvents(); // the reload the start queued
    }

    void window_state_is_remembered() {
        written_form()->setText(QStringLiteral("覚える"));
        m_bench->save_state();
        const window_state state = load_window_state();
        QCOMPARE(state.written_form, QStringLiteral("覚える"));
        QCOMPARE(state.plugin, menu()->currentText());
        QCOMPARE(state.folder, m_plugins.path() + QLatin1Char('/'));
        QVERIFY(!state.geometry.isEmpty());
        QVERIFY(
            QFile::exists(m_home.filePath(QStringLiteral("config/qiro/qiro-lumen-debugger.ini"))));
    }
};

QTEST_MAIN(workbench_test)
#include "workbench_test.moc"
