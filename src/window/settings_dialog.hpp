#pragma once
// The plug-in manager's settings as a dialog: proxy, authentication, keys, plug-in keys.

#include "settings/manager_preference_data.hpp"

#include <QDialog>

#include <array>
#include <functional>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace qiro_plugin::debugger {

// Reads the settings when made and writes them all on Save, through the same code the
// runs read them with. Without a keyring the password field is off and says why; the rest
// stays editable.
class settings_dialog : public QDialog {
    Q_OBJECT

public:
    // a_plugin_names: the choices offered for the numbered plug-in keys.
    settings_dialog(const QStringList& a_plugin_names, bool a_keyring_available,
                    QWidget* a_parent = nullptr);

    // The record the fields describe now; empty when the key combination is not assignable.
    std::optional<manager_preference_data> edited_data() const;
    // Writes edited_data(); false with the reason shown in the dialog.
    bool save();

    QLabel* keyring_notice() const { return m_keyring_notice; }

private:
    void load(const manager_preference_data& a_data);
    void update_enabled();

    manager_preference_data m_read;
    bool m_keyring_available;
    QCheckBox* m_auto_display;
    QComboBox* m_change_key;
    QCheckBox* m_shift;
    QCheckBox* m_ctrl;
    QCheckBox* m_option;
    std::array<QComboBox*, 5> m_plugin_keys{};
    QCheckBox* m_enable_proxy;
    QLineEdit* m_proxy_address;
    QSpinBox* m_proxy_port;
    QCheckBox* m_enable_authentication;
    QLineEdit* m_proxy_username;
    QLineEdit* m_proxy_password;
    QLabel* m_keyring_notice;
    QLabel* m_error;
};

} // namespace qiro_plugin::debugger
