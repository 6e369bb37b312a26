#include "core/plugin_discovery.hpp"
#include "support/scratch_folder.hpp"
#include "window/diagnosis_list.hpp"
#include "window/ui_controller.hpp"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

using namespace qiro_plugin;
using namespace qiro_plugin::debugger;

class diagnosis_list_test : public QObject {
    Q_OBJECT

private slots:
    void findings_show_with_hints_and_open_in_the_editor() {
        test_support::scratch_folder scratch;
        const std::string log = (scratch.path() / "editor.log").string();
        test_support::write_script(scratch.path() / "editor", "echo \"$@\" > '" + log + "'\n");
        qputenv("VISUAL", (scratch.path() / "editor").c_str());

        diagnosis_list list;
        diagnosis::finding placed{"plugin_exception",
                                  diagnosis::severity::error,
                                  "boom",
                                  "the traceback",
                                  "/plugins/my.py",
                                  7,
                                  {},
                                  {}};
        diagnosis::finding loose{
            "stray_output", diagnosis::severity::warning, "stray", "", {}, {}, {}, 0};
        list.show_findings({placed, loose});
        QTreeWidget* tree = list.tree();
        QCOMPARE(tree->topLevelItemCount(), 2);
        QCOMPARE(tree->topLevelItem(0)->text(0), QStringLiteral("boom"));
        QCOMPARE(tree->topLevelItem(0)->text(1), QStringLiteral("my.py:7"));
        QCOMPARE(tree->topLevelItem(0)->toolTip(0), QStringLiteral("the traceback"));
        QVERIFY(!tree->topLevelItem(1)->icon(0).isNull());
        QCOMPARE(tree->topLevelItem(1)->text(1), QString());

        emit tree->itemDoubleClicked(tree->topLevelItem(0), 0);
        QTRY_COMPARE(test_support::read_file(log), std::string("+7 /plugins/my.py\n"));

        QSignalSpy changes(&list, &diagnosis_list::probe_policy_changed);
        list.probe_menu()->actions().at(2)->trigger();
        QCOMPARE(changes.count(), 1);
        QCOMPARE(list.policy(), probe_policy::never);
    }

    void a_failed_run_in_the_window_lists_its_findings_under_the_panes() {
        QTemporaryDir home;
        qputenv("HOME", home.path().toUtf8());
        set_plugin_folder(make_plugin_folder(QIRO_TEST_DATA_DIR "/diagnosis"));
        auto& controller = ui_controller::getInstance();
        controller.window()->resize(900, 760);
        controller.window()->show();
        controller.reload();
        auto* menu = controller.window()->findChild<QComboBox*>(
            QStringLiteral("m_loaded_plusins_popup_button"));
        const int index = menu->findText(QStringLiteral("plugin_exception.py"));
        QVERIFY(index >= 0);
        menu->setCurrentIndex(index);
        emit menu->activated(index);
        controller.window()
            ->findChild<QLineEdit*>(QStringLiteral("m_hyoki_text_field"))
            ->setText(QStringLiteral("変換"));
        controller.run_debug();

        QTreeWidget* tree = controller.diagnosis_view()->tree();
        QCOMPARE(tree->topLevelItemCount(), 1);
        QVERIFY(tree->topLevelItem(0)->text(0).contains(QStringLiteral("ZeroDivisionError")));
        QCOMPARE(tree->topLevelItem(0)->text(1), QStringLiteral("plugin_exception.py:2"));
        QVERIFY(tree->topLevelItem(0)->toolTip(0).contains(QStringLiteral("[bridge]")));
        // The cause leads the status line, whose tooltip holds it whole.
        QStatusBar* status = controller.window()->statusBar();
        QVERIFY2(status->currentMessage().startsWith(tree->topLevelItem(0)->text(0)),
                 qPrintable(status->currentMessage()));
        QCOMPARE(status->toolTip(), status->currentMessage());
        if (const QByteArray path = qgetenv("QIRO_DIAGNOSIS_SCREENSHOT"); !path.isEmpty()) {
            QVERIFY(controller.window()->grab().save(QString::fromLocal8Bit(path)));
        }
        // Another plug-in chosen: nothing of this run is left on show as if it were its own.
        const int other = menu->findText(QStringLiteral("entry_missing.py"));
        QVERIFY(other >= 0);
        menu->setCurrentIndex(other);
        emit menu->activated(other);
        QCOMPARE(tree->topLevelItemCount(), 0);
        QCOMPARE(status->currentMessage(), QString());
        // Choosing again the plug-in that ran keeps nothing either; a reload keeps its own.
        menu->setCurrentIndex(index);
        emit menu->activated(index);
        controller.run_debug();
        QCOMPARE(tree->topLevelItemCount(), 1);
        controller.reload();
        QCOMPARE(tree->topLevelItemCount(), 1);
    }
};

QTEST_MAIN(diagnosis_list_test)
#include "diagnosis_list_test.moc"
