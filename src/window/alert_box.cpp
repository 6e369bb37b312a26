#include "window/alert_box.hpp"

#include <QCoreApplication>
#include <QMessageBox>

namespace qiro_plugin::debugger {

namespace {

alert_function& installed_function() {
    static alert_function function;
    return function;
}

void show_modal_box(QWidget* a_parent, const QString& a_title) {
    QMessageBox box(a_parent);
    box.setIcon(QMessageBox::Warning);
    box.setWindowTitle(QCoreApplication::applicationName());
    // The alert's title is what the user must read, so it is the box's main text.
    box.setText(a_title);
    box.setStandardButtons(QMessageBox::Ok);
    box.exec();
}

} // namespace

void set_alert_function(alert_function a_function) {
    installed_function() = std::move(a_function);
}

void show_alert_box(QWidget* a_parent, const QString& a_title) {
    if (installed_function()) {
        installed_function()(a_parent, a_title);
    } else {
        show_modal_box(a_parent, a_title);
    }
}

} // namespace qiro_plugin::debugger
