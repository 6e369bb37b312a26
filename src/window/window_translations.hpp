#pragma once
// Puts the window's own texts and the shared alert texts into the language of the locale.

#include <QLocale>

class QCoreApplication;

namespace qiro_plugin::debugger {

// Japanese for a Japanese locale, English otherwise; the alert texts follow the same choice.
void install_window_translations(QCoreApplication& a_application,
                                 const QLocale& a_locale = QLocale::system());

} // namespace qiro_plugin::debugger
