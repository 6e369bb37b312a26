#pragma once
// The one way the window shows an alert, replaceable so tests record alerts instead of blocking.

#include <QString>

#include <functional>

class QWidget;

namespace qiro_plugin::debugger {

// Receives the parent window and the alert's localized title.
using alert_function = std::function<void(QWidget* a_parent, const QString& a_title)>;

// Replaces how alerts are shown; an empty function restores the modal box.
void set_alert_function(alert_function a_function);

// A modal box with the title as its main text and one OK button (or the replacement).
void show_alert_box(QWidget* a_parent, const QString& a_title);

} // namespace qiro_plugin::debugger
