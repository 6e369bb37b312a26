#pragma once
// The window's switch for running plug-ins in the sandbox, remembered between sessions.

#include "core/debug_runner.hpp"

#include <QWidget>

class QCheckBox;

namespace qiro_plugin::debugger {

// "Sandbox" and "No network" check boxes that set the runner's mode; the choice is kept in
// the window's settings and restored when the toggle is made.
class sandbox_toggle : public QWidget {
    Q_OBJECT

public:
    sandbox_toggle(debug_runner& a_runner, QWidget* a_parent = nullptr);

    QCheckBox* sandbox_box() const { return m_sandbox; }
    QCheckBox* no_network_box() const { return m_no_network; }

private:
    void apply();

    debug_runner& m_runner;
    QCheckBox* m_sandbox;
    QCheckBox* m_no_network;
};

} // namespace qiro_plugin::debugger
