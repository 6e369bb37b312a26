#include "support/process_scan.hpp"
#include "text/string_encode.hpp"
#include "window/soak_tab.hpp"

#include <QCheckBox>
#include <QLabel>
#include <QProcess>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

#include <memory>

using namespace qiro_plugin;

namespace {

std::optional<debugger::plugin_entry> entry(const QTemporaryDir& a_folder, const char* a_name) {
    const std::string folder = a_folder.path().toStdString() + "/";
    return debugger::plugin_entry{string_encode::MultiByteFilePathToWideChar(folder.c_str()),
                                  string_encode::MultiByteUTF8ToWideChar(a_name)};
}

// qiro-lumen test on the plug-in's cases: its exit status.
int test_cases(const QString& a_plugin) {
    QProcess cli;
    cli.start(QStringLiteral(QIRO_CLI), {QStringLiteral("test"), a_plugin});
    return cli.waitForFinished(120000) ? cli.exitCode() : -1;
}

} // namespace

class soak_tab_test : public QObject {
    Q_OBJECT

private slots:
    void init() {
        QVERIFY(m_home.isValid() && m_temporary.isValid() && m_plugins.isValid());
        qputenv("HOME", m_home.path().toUtf8());
        qputenv("TMPDIR", m_temporary.path().toUtf8());
    }

    void shows_the_failures_of_a_file_corpus_and_saves_one_as_a_failing_case() {
        const QString plugin = m_plugins.filePath(QStringLiteral("held.py"));
        QVERIFY(QFile::copy(QStringLiteral(QIRO_TEST_DATA_DIR "/soak/held_inputs.py"), plugin));
        const QString forms = m_plugins.filePath(QStringLiteral("forms.txt"));
        QFile corpus(forms);
        QVERIFY(corpus.open(QIODevice::WriteOnly));
        corpus.write("変換\n%AB\na b c\nok\n%\nx y\n");
        corpus.close();

        const auto selected = entry(m_plugins, "held.py");
        debugger::soak_tab tab([&selected] { return selected; });
        QSignalSpy finished(&tab, &debugger::soak_tab::finished);
        QSignalSpy opened(&tab, &debugger::soak_tab::run_requested);
        tab.set_corpus_file(forms);
        tab.start();
        QVERIFY(tab.is_running());
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 120000);
        QCOMPARE(finished.first().at(0).toInt(), 2);
        QCOMPARE(tab.progress()->value(), 6);
        QCOMPARE(tab.counts()->text(), QStringLiteral("candidates: 2, plugin_exception: 4"));

        // Each distinct failure with its shortest input: a KeyError on "%", a ValueError on "x y".
        QTreeWidget* failures = tab.failure_list();
        QCOMPARE(failures->topLevelItemCount(), 2);
        QCOMPARE(failures->topLevelItem(0)->text(2), QStringLiteral("%"));
        QVERIFY(failures->topLevelItem(0)->text(3).contains(QStringLiteral("KeyError")));
        QCOMPARE(failures->topLevelItem(1)->text(2), QStringLiteral("x y"));
        failures->setCurrentItem(failures->topLevelItem(1));
        tab.open_selected_failure();
        QCOMPARE(opened.count(), 1);
        QCOMPARE(opened.first().at(0).toString(), QStringLiteral("x y"));

        // The saved case fails qiro-lumen test until the plug-in is fixed.
        failures->setCurrentItem(failures->topLevelItem(0));
        QCOMPARE(tab.save_selected_failure(), QString());
        QCOMPARE(test_cases(plugin), 1);
        QFile file(plugin);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QByteArray source = file.readAll();
        file.close();
        source.replace("TABLE[form[:1]]", "TABLE.get(form, form)");
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(source);
        file.close();
        QCOMPARE(test_cases(plugin), 0);
    }

    void stop_and_closing_mid_soak_leave_nothing_behind() {
        const QString forms = m_plugins.filePath(QStringLiteral("forms.txt"));
        QFile corpus(forms);
        QVERIFY(corpus.open(QIODevice::WriteOnly));
        for (int index = 0; index < 60; ++index) {
            corpus.write(QByteArray("slow") + QByteArray::number(index) + '\n');
        }
        corpus.close();
        QVERIFY(QFile::copy(QStringLiteral(QIRO_TEST_DATA_DIR "/soak/slow_echo.py"),
                            m_plugins.filePath(QStringLiteral("slow_echo.py"))));
        const auto selected = entry(m_plugins, "slow_echo.py");
        for (const bool fast : {true, false}) {
            auto tab = std::make_unique<debugger::soak_tab>([&selected] { return selected; });
            tab->fast_check()->setChecked(fast);
            tab->set_corpus_file(forms);
            QSignalSpy finished(tab.get(), &debugger::soak_tab::finished);
            tab->start();
            QTRY_VERIFY_WITH_TIMEOUT(tab->progress()->value() >= 1, 60000);
            if (fast) {
                tab->stop();
                QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 30000);
                QVERIFY(tab->progress()->value() < 60);
                QVERIFY(tab->findChild<QLabel*>(QStringLiteral("soak_status"))
                            ->text()
                            .contains(QStringLiteral("of 60")));
            }
            // Closing the window mid-soak: the tab goes while runs are in progress.
            tab.reset();
            QVERIFY(test_support::wait_for(
                [] { return test_support::processes_mentioning("slow_echo") == 0; },
                std::chrono::seconds(5)));
            QCOMPARE(QDir(m_temporary.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
                     QStringList());
            const QDir data(m_home.filePath(QStringLiteral("Library/Preferences/QIRO Lumen")));
            QCOMPARE(data.entryList(QDir::Files | QDir::Hidden), QStringList());
        }
    }

private:
    QTemporaryDir m_home;
    QTemporaryDir m_temporary;
    QTemporaryDir m_plugins;
};

QTEST_MAIN(soak_tab_test)
#include "soak_tab_test.moc"
