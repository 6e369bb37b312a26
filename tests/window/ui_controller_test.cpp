#include "core/localized_texts.hpp"
#include "core/plugin_discovery.hpp"
#include "window/alert_box.hpp"
#include "window/sandbox_toggle.hpp"
#include "window/ui_controller.hpp"
#include "window/window_translations.hpp"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QtTest>

#include <stdexcept>

using namespace qiro_plugin;
using namespace qiro_plugin::debugger;

class ui_controller_test : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_home;
    QTemporaryDir m_plugins;
    QStringList m_alerts;
    QStringList m_menu_at_alerts; // what the menu and Run showed while each alert was up

    ui_controller& controller() { return ui_controller::getInstance(); }
    template <typename widget> widget* find(const char* a_name) {
        auto* found = controller().window()->findChild<widget*>(QString::fromLatin1(a_name));
        if (found == nullptr) {
            qFatal("no control named %s", a_name);
        }
        return found;
    }
    QComboBox* menu() { return find<QComboBox>("m_loaded_plusins_popup_button"); }
    QPushButton* run_button() { return find<QPushButton>("m_run_debug_button"); }
    QLineEdit* hyoki_field() { return find<QLineEdit>("m_hyoki_text_field"); }
    QPlainTextEdit* std_output() { return find<QPlainTextEdit>("m_std_output_text_view"); }
    QPlainTextEdit* std_error() { return find<QPlainTextEdit>("m_std_error_output_text_view"); }
    QProgressBar* progress() { return find<QProgressBar>("m_progress"); }

    void add_sample(const QString& a_sample, const QString& a_as) {
        const QString source = QStringLiteral(QIRO_SAMPLE_PLUGIN_DIR "/") + a_sample;
        QVERIFY(QFile::copy(source, m_plugins.filePath(a_as)));
    }
    void remove_plugin(const QString& a_name) {
        QVERIFY(QFile::remove(m_plugins.filePath(a_name)));
    }
    void use_folder(const QString& a_folder) {
        set_plugin_folder(make_plugin_folder(a_folder.toStdString()));
    }
    QString localized(const char* a_key) {
        const auto text = localized_text(a_key, text_language::english);
        return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
    }
    // Types the written form and presses Run.
    void run_with(const QString& a_written_form) {
        hyoki_field()->setText(a_written_form);
        QTest::mouseClick(run_button(), Qt::LeftButton);
    }

private slots:
    void initTestCase() {
        QVERIFY(m_home.isValid() && m_plugins.isValid());
        qputenv("HOME", m_home.path().toUtf8());
        qputenv("QIRO_MACHINE_PREFERENCES_DIR",
                m_home.filePath(QStringLiteral("machine")).toUtf8());
        qputenv("PATH", "/usr/bin:/bin:" + qgetenv("PATH"));
        install_window_translations(*qApp, QLocale(QLocale::English));
        set_alert_function([this](QWidget*, const QString& a_title) {
            m_alerts << a_title;
            m_menu_at_alerts << QStringLiteral("%1 items, run %2")
                                    .arg(menu()->count())
                                    .arg(run_button()->isEnabled() ? "on" : "off");
        });
        controller().window()->show();
        // Before the first reload nothing can be chosen or run.
        QVERIFY(!menu()->isEnabled() && !run_button()->isEnabled());
    }

    void init() { m_alerts.clear(); }

    void reload_that_finds_nothing_disables_and_alerts_then_recovers() {
        use_folder(m_plugins.path());
        controller().reload();
        QCOMPARE(menu()->count(), 0);
        QVERIFY(!menu()->isEnabled());
        QVERIFY(!run_button()->isEnabled());
        QCOMPARE(m_alerts, QStringList{localized("AlertReloadError")});

        add_sample(QStringLiteral("sample_python.py"), QStringLiteral("sample_python.py"));
        m_alerts.clear();
        controller().reload();
        QCOMPARE(menu()->count(), 1);
        QVERIFY(menu()->isEnabled());
        QVERIFY(run_button()->isEnabled());
        QVERIFY(m_alerts.isEmpty());

        // The stale menu is gone and Run is off before the alert shows.
        remove_plugin(QStringLiteral("sample_python.py"));
        controller().reload();
        QCOMPARE(m_menu_at_alerts.last(), QStringLiteral("0 items, run off"));
        add_sample(QStringLiteral("sample_python.py"), QStringLiteral("sample_python.py"));
        controller().reload();
    }

    void reload_keeps_the_chosen_title_while_the_file_is_there() {
        add_sample(QStringLiteral("sample_ruby.rb"), QStringLiteral("a.rb"));
        controller().reload();
        QCOMPARE(menu()->count(), 2);
        QCOMPARE(menu()->itemText(0), QStringLiteral("a.rb"));
        QTest::keyClick(menu(), Qt::Key_Down); // the user picks b.py
        QCOMPARE(menu()->currentText(), QStringLiteral("sample_python.py"));

        add_sample(QStringLiteral("sample_perl.pl"), QStringLiteral("0.pl"));
        controller().reload();
        QCOMPARE(menu()->count(), 3);
        QCOMPARE(menu()->currentText(), QStringLiteral("sample_python.py"));
        QCOMPARE(controller().menu_model().selected_index().value_or(99), std::size_t{2});

        remove_plugin(QStringLiteral("0.pl"));
        remove_plugin(QStringLiteral("sample_python.py"));
        controller().reload();
        QCOMPARE(menu()->currentIndex(), 0);
        QCOMPARE(menu()->currentText(), QStringLiteral("a.rb"));
        add_sample(QStringLiteral("sample_python.py"), QStringLiteral("sample_python.py"));
        controller().reload();
        QTest::keyClick(menu(), Qt::Key_Down);
        QCOMPARE(menu()->currentText(), QStringLiteral("sample_python.py"));
        QVERIFY(m_alerts.isEmpty());
    }

    void refused_written_forms_alert_without_running() {
        controller().clear_std_output_text();
        controller().add_std_output_text(u"untouched");
        const QString untouched = std_output()->toPlainText();

        run_with(QString());
        run_with(QString(101, QLatin1Char('x')));
        QString non_bmp;
        for (int i = 0; i < 50; ++i) {
            non_bmp += QString::fromUtf8("\xF0\x9F\x98\x80");
        }
        run_with(non_bmp + QLatin1Char('x')); // 101 units in 51 characters
        QCOMPARE(m_alerts,
                 (QStringList{localized("AlertEmptyHyoki"), localized("AlertTooLongHyoki"),
                              localized("AlertTooLongHyoki")}));
        QCOMPARE(std_output()->toPlainText(), untouched);
        QVERIFY(!progress()->isVisible());
    }

    void longest_written_forms_run() {
        QString non_bmp;
        for (int i = 0; i < 50; ++i) {
            non_bmp += QString::fromUtf8("\xF0\x9F\x98\x80");
        }
        for (const QString& form : {QString(100, QLatin1Char('x')), non_bmp}) {
            controller().add_std_output_text(u"before");
            run_with(form);
            QVERIFY2(m_alerts.isEmpty(), qPrintable(m_alerts.join(QLatin1Char('|'))));
            const QString text = std_output()->toPlainText();
            QVERIFY2(text.startsWith(QStringLiteral("syntax ok\n<?xml")), qPrintable(text));
            QVERIFY(text.contains(QStringLiteral("<title>") + form + QStringLiteral("</title>")));
        }
    }

    void a_run_appends_each_output_with_exactly_one_line_break() {
        run_with(QStringLiteral("変換"));
        QVERIFY(m_alerts.isEmpty());
        const QString text = std_output()->toPlainText();
        QVERIFY2(text.startsWith(QStringLiteral(
                     "syntax ok\n<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n\n<itemlist>\n")),
                 qPrintable(text));
        // The document's own last line break, then the one of the append.
        QVERIFY2(text.endsWith(QStringLiteral("</itemlist>\n\n")) &&
                     !text.endsWith(QStringLiteral("\n\n\n")),
                 qPrintable(text.right(40)));
        QVERIFY(text.contains(QStringLiteral("<title>変換</title>")));
        const QString summary = controller().window()->statusBar()->currentMessage();
        QVERIFY2(summary.startsWith(QStringLiteral("sample_python.py ran as Python: 2 candidates")),
                 qPrintable(summary));
        // Each of the four appends (two per command) ends in one line break; an empty
        // standard error still gets its own.
        QCOMPARE(std_error()->toPlainText(), QStringLiteral("\n\n"));
        // What a run shows is the interpreter's, never the author's to edit.
        QVERIFY(std_output()->isReadOnly() && std_error()->isReadOnly());
        QCOMPARE(controller().window()->maximumSize(), controller().window()->minimumSize() * 2);
        QVERIFY(!progress()->isVisible());
    }

    void the_sandbox_toggle_confines_runs_and_is_remembered() {
        auto* toggle = controller().window()->findChild<sandbox_toggle*>();
        QVERIFY(toggle != nullptr);
        QVERIFY(!toggle->no_network_box()->isEnabled());
        toggle->sandbox_box()->setChecked(true);
        toggle->no_network_box()->setChecked(true);
        QCOMPARE(controller().options().sandbox, utility::sandbox_mode::nonet);
        run_with(QStringLiteral("変換"));
        const QString summary = controller().window()->statusBar()->currentMessage();
        QVERIFY2(summary.contains(QStringLiteral(" candidates ")) &&
                     summary.endsWith(QStringLiteral("(sandboxed, no network)")),
                 qPrintable(summary));
        // A toggle made later, as at the next start, finds the choice again.
        controller().options().sandbox = utility::sandbox_mode::off;
        const sandbox_toggle restored(controller().options());
        QCOMPARE(controller().options().sandbox, utility::sandbox_mode::nonet);
        QVERIFY(restored.no_network_box()->isChecked());
        toggle->sandbox_box()->setChecked(false);
        QCOMPARE(controller().options().sandbox, utility::sandbox_mode::off);
    }

    void the_window_stays_live_with_the_indicator_moving_during_a_run() {
        // The entry returns once the window has shown the indicator for 5 timer ticks.
        const QString go = m_plugins.filePath(QStringLiteral("go"));
        QFile slow(m_plugins.filePath(QStringLiteral("slow.py")));
        QVERIFY(slow.open(QIODevice::WriteOnly));
        slow.write("import os, time\n"
                   "def qiro_plugin_run_process(request):\n"
                   "    for _ in range(6000):\n"
                   "        if os.path.exists('" +
                   go.toUtf8() +
                   "'):\n"
                   "            break\n"
                   "        time.sleep(0.01)\n"
                   "    return {'candidate': [{'hyoki': request['composition_string']}]}\n");
        slow.close();
        controller().reload();
        QTest::keyClick(menu(), Qt::Key_End); // the last item, as the list is sorted
        QCOMPARE(menu()->currentText(), QStringLiteral("slow.py"));

        // Timers fire while the run blocks: the event loop turns and the indicator shows.
        int ticks_while_busy = 0;
        QTimer probe;
        connect(&probe, &QTimer::timeout, this, [&] {
            if (progress()->isVisible() && ++ticks_while_busy == 5) {
                QFile marker(go);
                QVERIFY(marker.open(QIODevice::WriteOnly));
            }
        });
        probe.start(100);
        run_with(QStringLiteral("ゆっくり"));
        probe.stop();
        QVERIFY2(ticks_while_busy >= 5, qPrintable(QString::number(ticks_while_busy)));
        QVERIFY(!progress()->isVisible());
        QVERIFY(std_output()->toPlainText().contains(QStringLiteral("<title>ゆっくり</title>")));
        QVERIFY(m_alerts.isEmpty());
    }

    void an_exception_in_a_run_gives_one_alert_and_stops_the_indicator() {
        controller().runner().set_instance_factory([](const utf16_string&, const utf16_string&,
                                                      run_output_sink& a_sink,
                                                      instance_attempt_report*) -> made_instance {
            a_sink.add_std_output_text(u"before the failure");
            throw std::runtime_error("instance could not be made");
        });
        run_with(QStringLiteral("x"));
        QCOMPARE(m_alerts, QStringList{localized("AlertRunDebugError")});
        QVERIFY(!progress()->isVisible());
        QCOMPARE(std_output()->toPlainText(), QStringLiteral("before the failure\n"));
        QVERIFY(controller().window()->statusBar()->currentMessage().endsWith(
            QStringLiteral("ended with an error: instance could not be made")));
        controller().runner().set_instance_factory({});
    }

    void japanese_locale_translates_controls_and_alerts() {
        install_window_translations(*qApp, QLocale(QLocale::Japanese));
        QTRY_COMPARE(run_button()->text(), QStringLiteral("実行(&R)"));
        run_with(QString());
        QCOMPARE(m_alerts, QStringList{QStringLiteral("プラグインに渡す表記を入力してください。")});
        install_window_translations(*qApp, QLocale(QLocale::English));
        QTRY_COMPARE(run_button()->text(), QStringLiteral("&Run"));
    }
};

QTEST_MAIN(ui_controller_test)
#include "ui_controller_test.moc"
