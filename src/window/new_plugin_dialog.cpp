#include "window/new_plugin_dialog.hpp"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace qiro_plugin::debugger {

new_plugin_dialog::new_plugin_dialog(const QString& a_folder, QWidget* a_parent)
    : QDialog(a_parent) {
    setObjectName(QStringLiteral("new_plugin_dialog"));
    setWindowTitle(tr("New Plug-in"));
    auto* form = new QFormLayout(this);
    m_language = new QComboBox;
    m_language->addItem(QStringLiteral("Python"), static_cast<int>(template_language::python));
    m_language->addItem(QStringLiteral("Ruby"), static_cast<int>(template_language::ruby));
    m_language->addItem(QStringLiteral("Perl"), static_cast<int>(template_language::perl));
    form->addRow(tr("&Language:"), m_language);
    m_name = new QLineEdit;
    m_name->setPlaceholderText(tr("my_plugin"));
    form->addRow(tr("&Name:"), m_name);
    auto* where = new QLabel(tr("It is created with its .xml document in %1.").arg(a_folder));
    where->setWordWrap(true);
    form->addRow(where);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("&Create"));
    buttons->button(QDialogButtonBox::Ok)->setEnabled(false);
    connect(m_name, &QLineEdit::textChanged, this, [this, buttons](const QString& a_text) {
        buttons->button(QDialogButtonBox::Ok)->setEnabled(!a_text.trimmed().isEmpty());
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons);
}

template_language new_plugin_dialog::language() const {
    return static_cast<template_language>(m_language->currentData().toInt());
}

QString new_plugin_dialog::name() const {
    return m_name->text().trimmed();
}

} // namespace qiro_plugin::debugger
