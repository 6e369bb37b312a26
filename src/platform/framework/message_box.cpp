#include "platform/framework/message_box.hpp"

#include "platform/framework/main_thread.hpp"

#include <QApplication>
#include <QMessageBox>
#include <QString>

#include <cstdio>
#include <mutex>

namespace qiro_plugin::utility {

namespace {

void show_default_message_box(const utf16_string& a_text) {
    const QString text = QString::fromUtf16(a_text.data(), static_cast<qsizetype>(a_text.size()));
    // Widgets need a QApplication; a console host still gets to see the text.
    if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) {
        std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
        return;
    }
    QMessageBox box(QMessageBox::NoIcon, QString(), text);
    // A button of its own keeps "OK" as written whatever Qt's translations say.
    box.setDefaultButton(box.addButton(QStringLiteral("OK"), QMessageBox::AcceptRole));
    box.exec();
}

struct message_box_state {
    std::mutex m_mutex;
    message_box_function m_function;
};

message_box_state& state() {
    static message_box_state instance;
    return instance;
}

} // namespace

message_box_function set_message_box_function(message_box_function a_function) {
    std::lock_guard lock(state().m_mutex);
    std::swap(state().m_function, a_function);
    return a_function;
}

void message_box(window_handle, const utf16_string& a_text, const utf16_string&, unsigned int) {
    message_box_function function;
    {
        std::lock_guard lock(state().m_mutex);
        function = state().m_function;
    }
    if (!function) {
        function = show_default_message_box;
    }
    run_on_main_thread([&function, &a_text] { function(a_text); });
}

} // namespace qiro_plugin::utility
