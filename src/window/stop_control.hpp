#pragma once
// Stop for a running plug-in: the Stop button, Esc, and the elapsed time of the run.

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

#include <memory>
#include <vector>

class QAction;
class QEvent;
class QLabel;
class QPushButton;
class QTimer;

namespace qiro_plugin::debugger {

// While a run blocks the window the event loop still turns (the runner's wait hook), but
// the user's clicks and keys are held back and delivered when the run has ended, as before.
// Only Stop (button or Esc) and the actions let through (Quit) act at once.
class stop_control : public QObject {
    Q_OBJECT

public:
    stop_control(QPushButton* a_stop_button, QLabel* a_elapsed_label, QObject* a_parent = nullptr);
    ~stop_control() override;

    // Actions whose shortcuts and menu items work during a run.
    void let_through(QAction* a_action);
    bool is_running() const { return m_running; }
    bool was_stopped() const { return m_stop_requested; }

public slots:
    // The ui_controller's busy indicator started or stopped.
    void set_running(bool a_running);
    // Ends the running plug-in's process group now; its run ends as a time-out does.
    void stop();

signals:
    void stopped();

protected:
    bool eventFilter(QObject* a_watched, QEvent* a_event) override;

private:
    bool is_allowed(QObject* a_watched, QEvent* a_event);
    bool is_for_stop_button(QObject* a_watched, QEvent* a_event);
    void show_elapsed();
    void deliver_held_events();

    QPushButton* m_stop_button;
    QLabel* m_elapsed_label;
    QTimer* m_elapsed_timer;
    QElapsedTimer m_clock;
    std::vector<QPointer<QAction>> m_let_through;
    std::vector<std::pair<QPointer<QObject>, std::unique_ptr<QEvent>>> m_held;
    bool m_running = false;
    bool m_stop_requested = false;
    // The top-level window handed a press to Stop, so the release is Stop's too.
    bool m_stop_took_press = false;
};

} // namespace qiro_plugin::debugger
