#include "window/window_translations.hpp"

#include "core/localized_texts.hpp"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

// The resource initialiser is a global function, so it has to be called from global scope.
static void init_window_translation_resources() {
    Q_INIT_RESOURCE(qiro_window_translations);
}

namespace qiro_plugin::debugger {

void install_window_translations(QCoreApplication& a_application, const QLocale& a_locale) {
    init_window_translation_resources();
    const bool japanese = a_locale.language() == QLocale::Japanese;
    install_localized_text_provider(japanese ? text_language::japanese : text_language::english);
    // The window's texts are written in English; a translator gives Japanese, or for English
    // the plural forms ("1 candidate"). One is installed at most.
    static QTranslator* installed = nullptr;
    if (installed != nullptr) {
        QCoreApplication::removeTranslator(installed);
        delete installed;
        installed = nullptr;
    }
    // Qt's own texts (Save and Cancel, Copy and Select All) in the same language, from the
    // system's Qt translations (Debian package qt6-translations-l10n).
    static QTranslator* installed_qt = nullptr;
    if (installed_qt != nullptr) {
        QCoreApplication::removeTranslator(installed_qt);
        delete installed_qt;
        installed_qt = nullptr;
    }
    if (japanese) {
        auto* qt_texts = new QTranslator(&a_application);
        if (qt_texts->load(QLocale(QLocale::Japanese), QStringLiteral("qtbase"),
                           QStringLiteral("_"),
                           QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
            QCoreApplication::installTranslator(qt_texts);
            installed_qt = qt_texts;
        } else {
            delete qt_texts;
        }
    }
    auto* translator = new QTranslator(&a_application);
    if (translator->load(japanese ? QStringLiteral(":/i18n/qiro_lumen_debugger_ja.qm")
                                  : QStringLiteral(":/i18n/qiro_lumen_debugger_en.qm"))) {
        QCoreApplication::installTranslator(translator);
        installed = translator;
    } else {
        delete translator;
    }
}

} // namespace qiro_plugin::debugger
