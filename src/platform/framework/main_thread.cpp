#include "platform/framework/main_thread.hpp"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThread>

namespace qiro_plugin::utility {

void run_on_main_thread(const std::function<void()>& a_work) {
    QCoreApplication* application = QCoreApplication::instance();
    if (application == nullptr || QThread::currentThread() == application->thread()) {
        a_work();
        return;
    }
    QMetaObject::invokeMethod(application, a_work, Qt::BlockingQueuedConnection);
}

} // namespace qiro_plugin::utility
