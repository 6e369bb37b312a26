#pragma once
// Asks for the language and the name of a new plug-in made from a template.

#include "core/plugin_templates.hpp"

#include <QDialog>

class QComboBox;
class QLineEdit;

namespace qiro_plugin::debugger {

class new_plugin_dialog : public QDialog {
    Q_OBJECT

public:
    explicit new_plugin_dialog(const QString& a_folder, QWidget* a_parent = nullptr);

    template_language language() const;
    QString name() const;
    QComboBox* language_box() const { return m_language; }
    QLineEdit* name_field() const { return m_name; }

private:
    QComboBox* m_language;
    QLineEdit* m_name;
};

} // namespace qiro_plugin::debugger
