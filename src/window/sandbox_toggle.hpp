#pragma once
// The window's switch for running plug-ins in the sandbox, remembered between sessions.

#include "core/run_request.hpp"

#include <QWidget>

class QCheckBox;

namespace qiro_plugin::debugger {

// "Sandbox" and "No network" check boxes that set the mode of the window's runs; the choice is
// kept in the window's settings and restored when the toggle is made.
class sandbox_toggle : public QWidget {
    Q_OBJECT

public:
    sandbox_toggle(run_options& a_options, QWidget* a_parent = nullptr);

    QCheckBox* sandbox_box() const { return m_sandbox; }
    QCheckBox* no_network_box() const { return m_no_network; }

private:
    void apply();

    run_options& m_options;
    QCheckBox* m_sandbox;
    QCheckBox* m_no_network;
};

} // namespace qiro_plugin::debugger
