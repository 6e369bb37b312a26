#include "debugger/window/diagnosis_list.hpp"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

using namespace qiro_plugin;
using namespace qiro_plugin::debugger;

class diagnosis_list_test : public QObject {
    Q_OBJECT

private slots:
    void findings_show_with_hints_and_open_in_the_editor() {
        QTemporaryDir scratch;
        const QString log = scratch.filePath(QStringLiteral("editor.log"));
        const QString editor = scratch.filePath(QStringLiteral("editor"));
        QFile script(editor);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(("#!/bin/sh\necho \"$@\" > '" + log + "'\n").toUtf8());
        script.close();
        QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        qputenv("VISUAL", editor.toUtf8());

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
        const auto logged = [&log] {
            QFile opened(log);
            return opened.open(QIODevice::ReadOnly) ? QString::fromUtf8(opened.readAll())
                                                    : QString();
        };
        QTRY_COMPARE(logged(), QStringLiteral("+7 /plugins/my.py\n"));

        QSignalSpy changes(&list, &diagnosis_list::probe_policy_changed);
        list.findChild<QComboBox*>(QStringLiteral("probe_policy"))->setCurrentIndex(2);
        QCOMPARE(changes.count(), 1);
        QCOMPARE(list.policy(), probe_policy::never);
    }
};

QTEST_MAIN(diagnosis_list_test)
#include "diagnosis_list_test.moc"
