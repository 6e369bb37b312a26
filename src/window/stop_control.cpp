#include "window/stop_control.hpp"

#include "platform/command_runner.hpp"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <utility>

namespace qiro_plugin::debugger {

stop_control::stop_control(QPushButton* a_stop_button, QLabel* a_elapsed_label, QObject* a_parent)
    : QObject(a_parent), m_stop_button(a_stop_button), m_elapsed_label(a_elapsed_label),
      m_elapsed_timer(new QTimer(this)) {
    m_stop_button->setEnabled(false);
    m_elapsed_timer->setInterval(100);
    connect(m_elapsed_timer, &QTimer::timeout, this, &stop_control::show_elapsed);
    connect(m_stop_button, &QPushButton::clicked, this, &stop_control::stop);
    // The runner calls this between its 100 ms waits: everything but user input is handled
    // now, and held-back input is kept for later by the filter below.
    utility::set_run_command_wait_hook([this] {
        // The Cases tab's workers run commands too; only the window's own thread turns its loop.
        if (QThread::currentThread() != thread()) {
            return;
        }
        if (m_stop_requested) {
            utility::stop_running_commands(); // a command that started after Stop was pressed
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    });
}

stop_control::~stop_control() {
    utility::set_run_command_wait_hook({});
    if (m_running) {
        qApp->removeEventFilter(this);
    }
}

void stop_control::let_through(QAction* a_action) {
    m_let_through.emplace_back(a_action);
}

void stop_control::set_running(bool a_running) {
    if (a_running == m_running) {
        return;
    }
    m_running = a_running;
    m_stop_button->setEnabled(a_running);
    if (a_running) {
        m_stop_requested = false;
        m_stop_took_press = false;
        qApp->installEventFilter(this);
        m_clock.start();
        show_elapsed();
        m_elapsed_timer->start();
    } else {
        qApp->removeEventFilter(this);
        m_elapsed_timer->stop();
        show_elapsed();
        deliver_held_events();
    }
}

void stop_control::stop() {
    if (!m_running) {
        return;
    }
    m_stop_requested = true;
    utility::stop_running_commands();
    emit stopped();
}

void stop_control::show_elapsed() {
    const double seconds = static_cast<double>(m_clock.elapsed()) / 1000.0;
    m_elapsed_label->setText(m_stop_requested ? tr("%1 s, stopped").arg(seconds, 0, 'f', 1)
                                              : tr("%1 s").arg(seconds, 0, 'f', 1));
}

// A press from the window system is sent to the top-level window first, which hands it to the
// widget under the pointer; its release goes to the widget that took the press, wherever the
// pointer is then.
bool stop_control::is_for_stop_button(QObject* a_watched, QEvent* a_event) {
    QWidget* top_level = m_stop_button->window();
    if (a_watched != top_level->windowHandle()) {
        return false;
    }
    if (a_event->type() == QEvent::MouseButtonRelease) {
        return std::exchange(m_stop_took_press, false);
    }
    const QPoint at = static_cast<QMouseEvent*>(a_event)->position().toPoint();
    m_stop_took_press = top_level->childAt(at) == m_stop_button;
    return m_stop_took_press;
}

bool stop_control::is_allowed(QObject* a_watched, QEvent* a_event) {
    if (a_watched == m_stop_button) {
        return true;
    }
    switch (a_event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
        if (is_for_stop_button(a_watched, a_event)) {
            return true;
        }
        break;
    default:
        break;
    }
    if (a_event->type() == QEvent::Shortcut) {
        for (const auto& action : m_let_through) {
            if (action == a_watched) {
                return true;
            }
        }
        return false;
    }
    // The menus of the let-through actions open and take their clicks.
    if (const auto* menu = qobject_cast<QMenu*>(a_watched)) {
        for (const auto& action : m_let_through) {
            if (action && menu->actions().contains(action.data())) {
                return true;
            }
        }
    }
    return false;
}

bool stop_control::eventFilter(QObject* a_watched, QEvent* a_event) {
    switch (a_event->type()) {
    case QEvent::KeyPress:
        if (static_cast<QKeyEvent*>(a_event)->key() == Qt::Key_Escape) {
            stop();
            return true;
        }
        [[fallthrough]];
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::Shortcut:
    case QEvent::ContextMenu:
    case QEvent::InputMethod:
        if (is_allowed(a_watched, a_event)) {
            return false;
        }
        m_held.emplace_back(a_watched, std::unique_ptr<QEvent>(a_event->clone()));
        return true;
    default:
        return false;
    }
}

void stop_control::deliver_held_events() {
    auto held = std::move(m_held);
    m_held.clear();
    for (auto& [receiver, event] : held) {
        if (receiver) {
            QCoreApplication::postEvent(receiver, event.release());
        }
    }
}

} // namespace qiro_plugin::debugger
