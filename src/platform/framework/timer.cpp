#include "platform/framework/timer.hpp"

#include "platform/failed_assertion.hpp"
#include "platform/framework/main_thread.hpp"

#include <QTimer>

#include <algorithm>

namespace qiro_plugin::utility {

int set_timer(window_handle a_handle, int a_identifier, int a_milliseconds) {
    QIRO_ASSERT(a_handle);
    run_on_main_thread([a_handle, a_identifier, a_milliseconds] {
        // Made here so that the timer belongs to the main thread and fires in its loop.
        auto timer = std::make_unique<QTimer>();
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
        timer->setInterval(std::max(a_milliseconds, 0));
        QObject::connect(timer.get(), &QTimer::timeout, timer.get(),
                         [a_handle, a_identifier] { a_handle->timer_timeout(a_identifier); });
        timer->start();
        a_handle->add_timer(a_identifier, std::move(timer));
    });
    return 1;
}

int kill_timer(window_handle a_handle, int a_identifier) {
    QIRO_ASSERT(a_handle);
    run_on_main_thread([a_handle, a_identifier] { a_handle->delete_timer(a_identifier); });
    return 1;
}

} // namespace qiro_plugin::utility
