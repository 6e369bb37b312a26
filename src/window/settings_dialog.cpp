#include "window/settings_dialog.hpp"

#include "keys/zul_key_access.hpp"
#include "settings/manager_preference_access.hpp"
#include "window/qt_text.hpp"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace qiro_plugin::debugger {

namespace {

zul_key_access& change_keys() {
    return zul_key_access::getInstance(zul_key_access::TYPE_QIRO_LUMEN_CANDIDATE_CHANGE);
}

} // namespace

settings_dialog::settings_dialog(const QStringList& a_plugin_names, bool a_keyring_available,
                                 QWidget* a_parent)
    : QDialog(a_parent), m_keyring_available(a_keyring_available) {
    setObjectName(QStringLiteral("settings_dialog"));
    setWindowTitle(tr("Plug-in Manager Settings"));
    auto* layout = new QVBoxLayout(this);

    auto* candidates = new QGroupBox(tr("Candidates"));
    auto* candidate_form = new QFormLayout(candidates);
    m_auto_display = new QCheckBox(tr("Show plug-in candidates &automatically"));
    candidate_form->addRow(m_auto_display);
    auto* key_row = new QHBoxLayout;
    m_change_key = new QComboBox;
    m_change_key->setObjectName(QStringLiteral("m_change_key"));
    for (const auto& name : change_keys().get_key_list()) {
        m_change_key->addItem(to_qstring(name));
    }
    m_shift = new QCheckBox(tr("S&hift"));
    m_ctrl = new QCheckBox(tr("C&trl"));
    m_option = new QCheckBox(tr("Opt&ion"));
    key_row->addWidget(m_change_key, 1);
    key_row->addWidget(m_shift);
    key_row->addWidget(m_ctrl);
    key_row->addWidget(m_option);
    auto* key_label = new QLabel(tr("Candidate &change key:"));
    key_label->setBuddy(m_change_key);
    candidate_form->addRow(key_label, key_row);
    for (std::size_t index = 0; index < m_plugin_keys.size(); ++index) {
        auto* box = new QComboBox;
        box->setEditable(true);
        box->addItem(QString());
        box->addItems(a_plugin_names);
        box->setObjectName(QStringLiteral("m_plugin_key_%1").arg(index + 1));
        m_plugin_keys[index] = box;
        candidate_form->addRow(tr("Plug-in key &%1:").arg(index + 1), box);
    }
    layout->addWidget(candidates);

    auto* proxy = new QGroupBox(tr("Proxy"));
    auto* proxy_form = new QFormLayout(proxy);
    m_enable_proxy = new QCheckBox(tr("Use a &proxy"));
    proxy_form->addRow(m_enable_proxy);
    m_proxy_address = new QLineEdit;
    m_proxy_address->setObjectName(QStringLiteral("m_proxy_address"));
    proxy_form->addRow(tr("A&ddress:"), m_proxy_address);
    m_proxy_port = new QSpinBox;
    m_proxy_port->setObjectName(QStringLiteral("m_proxy_port"));
    m_proxy_port->setRange(0, 65535);
    proxy_form->addRow(tr("P&ort:"), m_proxy_port);
    m_enable_authentication = new QCheckBox(tr("The proxy needs a user &name and password"));
    proxy_form->addRow(m_enable_authentication);
    m_proxy_username = new QLineEdit;
    m_proxy_username->setObjectName(QStringLiteral("m_proxy_username"));
    proxy_form->addRow(tr("&User name:"), m_proxy_username);
    m_proxy_password = new QLineEdit;
    m_proxy_password->setObjectName(QStringLiteral("m_proxy_password"));
    m_proxy_password->setEchoMode(QLineEdit::Password);
    proxy_form->addRow(tr("Pass&word:"), m_proxy_password);
    m_keyring_notice = new QLabel;
    m_keyring_notice->setObjectName(QStringLiteral("m_keyring_notice"));
    m_keyring_notice->setWordWrap(true);
    proxy_form->addRow(m_keyring_notice);
    layout->addWidget(proxy);

    m_error = new QLabel;
    m_error->setWordWrap(true);
    m_error->setStyleSheet(QStringLiteral("color: #b00000"));
    layout->addWidget(m_error);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        if (save()) {
            accept();
        }
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_enable_proxy, &QCheckBox::toggled, this, &settings_dialog::update_enabled);
    connect(m_enable_authentication, &QCheckBox::toggled, this, &settings_dialog::update_enabled);

    m_read = manager_preference_access::read_manager_preference();
    load(m_read);
}

void settings_dialog::load(const manager_preference_data& a_data) {
    m_auto_display->setChecked(a_data.automatically_displayed_candidate != 0);
    const auto& keys = change_keys();
    const auto names = keys.get_key_list();
    if (keys.is_zul_key(a_data.key_plugin_candidate_change)) {
        const std::uint32_t code = a_data.key_plugin_candidate_change;
        const bool shift = keys.get_zul_key_state_shift(code);
        const bool ctrl = keys.get_zul_key_state_ctrl(code);
        const bool option = keys.get_zul_key_state_option(code);
        for (std::size_t index = 0; index < names.size(); ++index) {
            const auto position = static_cast<std::int32_t>(index);
            if (keys.is_zul_key(shift, ctrl, option, position) &&
                keys.get_zul_key(shift, ctrl, option, position) == code) {
                m_change_key->setCurrentIndex(static_cast<int>(index));
                break;
            }
        }
        m_shift->setChecked(shift);
        m_ctrl->setChecked(ctrl);
        m_option->setChecked(option);
    }
    const utf16_string* plugin_names[] = {&a_data.key_1_plugin_name, &a_data.key_2_plugin_name,
                                          &a_data.key_3_plugin_name, &a_data.key_4_plugin_name,
                                          &a_data.key_5_plugin_name};
    for (std::size_t index = 0; index < m_plugin_keys.size(); ++index) {
        m_plugin_keys[index]->setCurrentText(to_qstring(*plugin_names[index]));
    }
    m_enable_proxy->setChecked(a_data.enable_proxy != 0);
    m_proxy_address->setText(to_qstring(a_data.proxy_address));
    m_proxy_port->setValue(static_cast<int>(std::min<std::uint32_t>(a_data.proxy_port, 65535)));
    m_enable_authentication->setChecked(a_data.enable_authentication != 0);
    m_proxy_username->setText(to_qstring(a_data.proxy_username));
    m_proxy_password->setText(to_qstring(a_data.proxy_password));
    m_keyring_notice->setText(
        m_keyring_available
            ? tr("The password is kept in the keyring.")
            : tr("No keyring is running, so the password can be neither read nor stored. "
                 "Start one (for example gnome-keyring-daemon) to set it."));
    update_enabled();
}

void settings_dialog::update_enabled() {
    const bool proxy = m_enable_proxy->isChecked();
    const bool authentication = proxy && m_enable_authentication->isChecked();
    m_proxy_address->setEnabled(proxy);
    m_proxy_port->setEnabled(proxy);
    m_enable_authentication->setEnabled(proxy);
    m_proxy_username->setEnabled(authentication);
    m_proxy_password->setEnabled(authentication && m_keyring_available);
}

std::optional<manager_preference_data> settings_dialog::edited_data() const {
    manager_preference_data edited = m_read;
    edited.automatically_displayed_candidate = m_auto_display->isChecked() ? 1 : 0;
    const auto& keys = change_keys();
    const int index = m_change_key->currentIndex();
    if (index >= 0) {
        if (!keys.is_zul_key(m_shift->isChecked(), m_ctrl->isChecked(), m_option->isChecked(),
                             index)) {
            return std::nullopt;
        }
        edited.key_plugin_candidate_change = keys.get_zul_key(
            m_shift->isChecked(), m_ctrl->isChecked(), m_option->isChecked(), index);
    }
    utf16_string* plugin_names[] = {&edited.key_1_plugin_name, &edited.key_2_plugin_name,
                                    &edited.key_3_plugin_name, &edited.key_4_plugin_name,
                                    &edited.key_5_plugin_name};
    for (std::size_t slot = 0; slot < m_plugin_keys.size(); ++slot) {
        *plugin_names[slot] = to_utf16(m_plugin_keys[slot]->currentText());
    }
    edited.enable_proxy = m_enable_proxy->isChecked() ? 1 : 0;
    edited.proxy_address = to_utf16(m_proxy_address->text());
    edited.proxy_port = static_cast<std::uint32_t>(m_proxy_port->value());
    edited.enable_authentication = m_enable_authentication->isChecked() ? 1 : 0;
    edited.proxy_username = to_utf16(m_proxy_username->text());
    if (m_keyring_available) {
        edited.proxy_password = to_utf16(m_proxy_password->text());
    }
    return edited;
}

bool settings_dialog::save() {
    const auto edited = edited_data();
    if (!edited) {
        m_error->setText(tr("That combination of key and modifiers cannot be assigned."));
        return false;
    }
    if (!manager_preference_access::save_manager_preference(*edited)) {
        m_error->setText(tr("The settings could not be written to the preference file."));
        return false;
    }
    m_read = *edited;
    m_error->clear();
    return true;
}

} // namespace qiro_plugin::debugger
