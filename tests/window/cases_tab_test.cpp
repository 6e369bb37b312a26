#include "cases/case_runner.hpp"
#include "support/scratch_folder.hpp"
#include "text/string_encode.hpp"
#include "window/cases_tab.hpp"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

#include <algorithm>
#include <fstream>

using namespace qiro_plugin;

class cases_tab_test : public QObject {
    Q_OBJECT

private slots:
    void runs_the_selected_plugins_cases_and_saves_a_run_as_a_case() {
        QTemporaryDir home;
        QTemporaryDir plugins;
        qputenv("HOME", home.path().toUtf8());
        QVERIFY(QFile::copy(QStringLiteral(QIRO_SAMPLE_PLUGIN_DIR "/sample_perl.pl"),
                            plugins.filePath(QStringLiteral("mine.pl"))));
        std::ofstream(plugins.filePath(QStringLiteral("mine.cases.json")).toStdString())
            << R"({"cases": [
                {"name": "good", "written_form": "abc", "expect": {"candidates": [{"hyoki": "abc"}],
                 "match": "prefix"}},
                {"name": "bad", "written_form": "abc", "expect": {"candidates": [{"hyoki": "x"}],
                 "match": "prefix"}}]})";
        const std::string folder = plugins.path().toStdString() + "/";
        std::optional<debugger::plugin_entry> selected = debugger::plugin_entry{
            string_encode::MultiByteFilePathToWideChar(folder.c_str()), u"mine.pl"};
        debugger::cases_tab tab([&selected] { return selected; });
        tab.show();
        QCOMPARE(tab.case_list()->topLevelItemCount(), 2);

        QSignalSpy finished(&tab, &debugger::cases_tab::cases_finished);
        tab.run_all();
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 1);
        QCOMPARE(tab.case_list()->topLevelItem(0)->text(2), QStringLiteral("pass"));
        QCOMPARE(tab.case_list()->topLevelItem(1)->text(2), QStringLiteral("FAIL"));
        tab.case_list()->setCurrentItem(tab.case_list()->topLevelItem(1));
        QVERIFY2(tab.detail()->toPlainText().contains(QStringLiteral("- 1. hyoki=\"x\"\n"
                                                                     "+ 1. hyoki=\"abc\"")),
                 qPrintable(tab.detail()->toPlainText()));

        // A run saved as a case passes when the cases run again.
        cases::test_case inputs;
        inputs.written_form = "保存";
        const auto run = cases::run_case(inputs, *selected);
        QCOMPARE(tab.save_as_case(QStringLiteral("good"), inputs, run), QString());
        QCOMPARE(tab.case_list()->topLevelItemCount(), 3);
        QCOMPARE(tab.case_list()->topLevelItem(2)->text(0), QStringLiteral("good (2)"));
        tab.case_list()->setCurrentItem(tab.case_list()->topLevelItem(2));
        tab.run_selected();
        QCOMPARE(tab.case_list()->topLevelItem(2)->text(2), QStringLiteral("pass"));

        selected.reset();
        tab.reload();
        QCOMPARE(tab.case_list()->topLevelItemCount(), 0);
    }

    void shows_the_coverage_of_a_run_and_opens_the_first_line_not_reached() {
        QTemporaryDir home;
        QTemporaryDir plugins;
        qputenv("HOME", home.path().toUtf8());
        qputenv("PATH", "/usr/bin:/bin");
        for (const char* name : {"branchy_python.py", "branchy_python.cases.json"}) {
            QVERIFY(QFile::copy(QStringLiteral(QIRO_TEST_DATA_DIR "/coverage/") + name,
                                plugins.filePath(QString::fromUtf8(name))));
        }
        const std::string folder = plugins.path().toStdString() + "/";
        const std::optional<debugger::plugin_entry> selected = debugger::plugin_entry{
            string_encode::MultiByteFilePathToWideChar(folder.c_str()), u"branchy_python.py"};
        debugger::cases_tab tab([&selected] { return selected; });
        auto* open_uncovered = tab.findChild<QAction*>(QStringLiteral("open_uncovered"));
        QVERIFY(open_uncovered != nullptr);

        // Unticked, the cases run as they always did: nothing is measured.
        tab.run_all();
        QCOMPARE(tab.coverage_summary()->text(), QString());
        QCOMPARE(tab.first_line_not_reached(), 0U);
        QVERIFY(!open_uncovered->isEnabled());

        tab.coverage_check()->setChecked(true);
        tab.run_all();
        QCOMPARE(tab.coverage_summary()->text(),
                 QStringLiteral("branchy_python.py: 7 of 9 lines (77 %), 1 of 2 branches"));
        QCOMPARE(tab.first_line_not_reached(), 8U);

        // The editor gets "+LINE FILE", as the diagnosis list gives it.
        const std::string opened = home.filePath(QStringLiteral("opened")).toStdString();
        const std::string editor = home.filePath(QStringLiteral("editor")).toStdString();
        test_support::write_script(editor, "echo \"$@\" > '" + opened + "'\n");
        qputenv("VISUAL", editor.c_str());
        QVERIFY(open_uncovered->isEnabled());
        open_uncovered->trigger();
        QTRY_COMPARE(QString::fromStdString(test_support::read_file(opened)),
                     QStringLiteral("+8 ") + plugins.filePath(QStringLiteral("branchy_python.py")) +
                         QLatin1Char('\n'));
        qunsetenv("VISUAL");

        // The report is made beside the window, which stays live: nothing is made by the time
        // the call returns, and a missing genhtml is named with its package.
        QSignalSpy made(&tab, &debugger::cases_tab::html_report_made);
        qputenv("PATH", home.path().toUtf8());
        tab.make_html_report();
        QTRY_COMPARE(made.count(), 1);
        QCOMPARE(made.takeFirst().at(0).toString(), QString());
        const auto labels = tab.findChildren<QLabel*>();
        QVERIFY(std::any_of(labels.begin(), labels.end(), [](const QLabel* a_label) {
            return a_label->text().contains(QStringLiteral("lcov"));
        }));
        if (QFile::exists(QStringLiteral("/usr/bin/genhtml"))) {
            qputenv("PATH", "/usr/bin:/bin");
            tab.make_html_report();
            QCOMPARE(made.count(), 0);
            QTRY_COMPARE_WITH_TIMEOUT(made.count(), 1, 120000);
            QVERIFY(QFile::exists(made.takeFirst().at(0).toString()));
        }
    }
};

QTEST_MAIN(cases_tab_test)
#include "cases_tab_test.moc"
