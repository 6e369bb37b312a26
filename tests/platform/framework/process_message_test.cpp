#include "platform/framework/process_message.hpp"
#include "platform/framework/window_message.hpp"

#include "platform/framework/event_loop.hpp"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

using namespace std::chrono_literals;
using namespace qiro_plugin::utility;

namespace {

// Stands in for the input method or the plug-in manager, owning a_service on a connection of
// its own as the receiving process would. Notes every call it receives as
// "interface.member(signature) message long_parameter", and whether it wanted a reply.
class receiver : public QDBusVirtualObject {
public:
    explicit receiver(const char* a_service) : m_service(a_service) {
        QDBusConnection connection =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, a_service);
        m_ready = connection.registerVirtualObject(plugin_event_path, this) &&
                  connection.registerService(a_service);
    }
    ~receiver() override {
        QDBusConnection(m_service).unregisterObject(plugin_event_path);
        QDBusConnection::disconnectFromBus(m_service);
    }
    bool handleMessage(const QDBusMessage& a_message, const QDBusConnection&) override {
        QString event =
            a_message.interface() + "." + a_message.member() + "(" + a_message.signature() + ")";
        for (const QVariant& argument : a_message.arguments()) {
            event += " " + QString::number(argument.toUInt());
        }
        event += a_message.isReplyRequired() ? " reply" : "";
        std::lock_guard lock(m_mutex);
        m_events.push_back(event.toStdString());
        return true;
    }
    QString introspect(const QString&) const override { return {}; }
    std::vector<std::string> events() {
        std::lock_guard lock(m_mutex);
        return m_events;
    }

    bool m_ready = false;

private:
    QString m_service;
    std::mutex m_mutex;
    std::vector<std::string> m_events;
};

using sender = int (*)(qiro_plugin::window_handle, int, int, int);

} // namespace

TEST(process_message, messages_reach_only_their_receiver_with_their_long_parameter) {
    // With nobody listening a message still counts as sent, and the sender waits for no one.
    int unheard = 0;
    ASSERT_TRUE(qiro_test::run_on_worker(
        [&] {
            unheard = post_message_to_other_process(nullptr, 9, 0, 1) +
                      post_message_to_other_process(nullptr, 5, 0, 1);
        },
        10s));
    EXPECT_EQ(unheard, 2);

    receiver input_method(input_method_service);
    receiver manager(plugin_manager_service);
    ASSERT_TRUE(input_method.m_ready && manager.m_ready) << "run inside dbus-run-session";
    const sender post = post_message_to_other_process;
    const int unknown = register_window_message("[Qiro => PluginManager] message for customize");
    // {how, message, long parameter, answer}. Unassigned numbers, unknown names and messages
    // handed to the wrong sender go out first; one sender's messages arrive in order, so
    // anything they sent would show among the events below.
    const std::vector<std::tuple<sender, int, int, int>> sends = {
        {post, 8, 1, 0},        {post, unknown, 1, 0},  {post, 12, 1, 0},
        {post, -9, 1, 0},       {sendQIRO, 1, 1, 0},    {sendQIRO, 8, 1, 0},
        {sendManager, 9, 1, 0}, {sendManager, 8, 1, 0}, {post, 9, -559038737, 1},
        {sendQIRO, 10, 10, 1},  {post, 11, 0, 1},       {post, 1, 1001, 1},
        {post, 2, 1002, 1},     {post, 3, 1003, 1},     {post, 4, 1004, 1},
        {post, 5, 1005, 1},     {post, 6, 1006, 1},     {post, 7, 1007, 1},
        {sendManager, 4, 44, 1}};
    for (const auto& [send, message, long_parameter, answer] : sends) {
        EXPECT_EQ(send(nullptr, message, -1, long_parameter), answer) << message;
    }

    ASSERT_TRUE(qiro_test::spin_until(
        [&] { return input_method.events().size() >= 3 && manager.events().size() >= 8; }, 20s));
    qiro_test::spin_for(100ms);
    const std::string plug = "org.qiro.PluginEvent.PLUG(uu) ";
    const std::string qiro = "org.qiro.PluginEvent.QIRO(uu) ";
    EXPECT_THAT(input_method.events(),
                ::testing::ElementsAre(plug + "9 3735928559", plug + "10 10", plug + "11 0"));
    EXPECT_THAT(manager.events(),
                ::testing::ElementsAre(qiro + "1 1001", qiro + "2 1002", qiro + "3 1003",
                                       qiro + "4 1004", qiro + "5 1005", qiro + "6 1006",
                                       qiro + "7 1007", qiro + "4 44"));
}
