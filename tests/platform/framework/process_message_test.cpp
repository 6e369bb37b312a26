#include "platform/framework/process_message.hpp"
#include "platform/framework/window_message.hpp"

#include "platform/framework/event_loop.hpp"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <future>
#include <mutex>
#include <vector>

using namespace std::chrono_literals;
using namespace qiro_plugin::utility;

namespace {

struct received_event {
    QString m_interface;
    QString m_member;
    QString m_signature;
    std::uint32_t m_message = 0;
    std::uint32_t m_long_parameter = 0;
    bool m_reply_required = true;

    friend bool operator==(const received_event&, const received_event&) = default;
};

// Stands in for the input method or the plug-in manager: records every call it receives.
class event_recorder : public QDBusVirtualObject {
public:
    bool handleMessage(const QDBusMessage& a_message, const QDBusConnection&) override {
        received_event event;
        event.m_interface = a_message.interface();
        event.m_member = a_message.member();
        event.m_signature = a_message.signature();
        event.m_reply_required = a_message.isReplyRequired();
        const QList<QVariant> arguments = a_message.arguments();
        if (arguments.size() == 2) {
            event.m_message = arguments[0].toUInt();
            event.m_long_parameter = arguments[1].toUInt();
        }
        std::lock_guard lock(m_mutex);
        m_events.push_back(event);
        return true;
    }

    QString introspect(const QString&) const override { return {}; }

    std::vector<received_event> events() {
        std::lock_guard lock(m_mutex);
        return m_events;
    }

private:
    std::mutex m_mutex;
    std::vector<received_event> m_events;
};

received_event to_input_method(std::uint32_t a_message, std::uint32_t a_long_parameter) {
    return {"org.qiro.PluginEvent", "PLUG", "uu", a_message, a_long_parameter, false};
}

received_event to_manager(std::uint32_t a_message, std::uint32_t a_long_parameter) {
    return {"org.qiro.PluginEvent", "QIRO", "uu", a_message, a_long_parameter, false};
}

// Owns one bus name on a connection of its own, as the receiving process would.
class receiver {
public:
    receiver(const QString& a_connection_name, const QString& a_service)
        : m_connection_name(a_connection_name) {
        QDBusConnection connection =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, a_connection_name);
        m_ready = connection.isConnected() &&
                  connection.registerVirtualObject(plugin_event_path, &m_recorder) &&
                  connection.registerService(a_service);
    }
    ~receiver() {
        QDBusConnection(m_connection_name).unregisterObject(plugin_event_path);
        QDBusConnection::disconnectFromBus(m_connection_name);
    }
    receiver(const receiver&) = delete;
    receiver& operator=(const receiver&) = delete;

    bool ready() const { return m_ready; }
    std::vector<received_event> events() { return m_recorder.events(); }

private:
    QString m_connection_name;
    event_recorder m_recorder;
    bool m_ready = false;
};

class process_message : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()) << "run inside dbus-run-session";
    }
};

class process_message_received : public process_message {
protected:
    receiver m_input_method{"framework-test-q22s", input_method_service};
    receiver m_manager{"framework-test-q22i", plugin_manager_service};

    void SetUp() override {
        process_message::SetUp();
        ASSERT_TRUE(m_input_method.ready());
        ASSERT_TRUE(m_manager.ready());
    }

    bool wait_for(std::size_t a_input_method_count, std::size_t a_manager_count) {
        return qiro_test::spin_until(
            [&] {
                return m_input_method.events().size() >= a_input_method_count &&
                       m_manager.events().size() >= a_manager_count;
            },
            20s);
    }
};

} // namespace

TEST_F(process_message_received, each_message_reaches_its_receiver_with_its_long_parameter) {
    EXPECT_EQ(post_message_to_other_process(nullptr, 9, 111, -559038737), 1);
    EXPECT_EQ(sendQIRO(nullptr, 10, 0, 10), 1);
    EXPECT_EQ(post_message_to_other_process(nullptr, 11, 0, 0), 1);
    std::vector<received_event> expected_manager;
    for (int message = 1; message <= 7; ++message) {
        EXPECT_EQ(post_message_to_other_process(nullptr, message, -1, 1000 + message), 1);
        expected_manager.push_back(to_manager(static_cast<std::uint32_t>(message),
                                              static_cast<std::uint32_t>(1000 + message)));
    }
    EXPECT_EQ(sendManager(nullptr, 4, 0, 44), 1);
    expected_manager.push_back(to_manager(4, 44));

    ASSERT_TRUE(wait_for(3, expected_manager.size()));
    EXPECT_THAT(m_input_method.events(),
                ::testing::ElementsAre(to_input_method(9, 0xDEADBEEFu), to_input_method(10, 10),
                                       to_input_method(11, 0)));
    EXPECT_EQ(m_manager.events(), expected_manager);
}

TEST_F(process_message_received, unassigned_and_misdirected_messages_send_nothing) {
    EXPECT_EQ(post_message_to_other_process(nullptr, 8, 0, 1), 0);
    EXPECT_EQ(post_message_to_other_process(
                  nullptr, register_window_message("[Qiro => PluginManager] message for customize"),
                  0, 2),
              0);
    EXPECT_EQ(post_message_to_other_process(nullptr, 12, 0, 3), 0);
    EXPECT_EQ(post_message_to_other_process(nullptr, -9, 0, 4), 0);
    EXPECT_EQ(sendQIRO(nullptr, 1, 0, 5), 0);
    EXPECT_EQ(sendQIRO(nullptr, 8, 0, 6), 0);
    EXPECT_EQ(sendManager(nullptr, 9, 0, 7), 0);
    EXPECT_EQ(sendManager(nullptr, 8, 0, 8), 0);

    // Messages from one sender arrive in order, so once these two are in, anything sent
    // before them would have arrived too.
    ASSERT_EQ(post_message_to_other_process(nullptr, 11, 0, 77), 1);
    ASSERT_EQ(post_message_to_other_process(nullptr, 7, 0, 77), 1);
    ASSERT_TRUE(wait_for(1, 1));
    qiro_test::spin_for(100ms);
    EXPECT_THAT(m_input_method.events(), ::testing::ElementsAre(to_input_method(11, 77)));
    EXPECT_THAT(m_manager.events(), ::testing::ElementsAre(to_manager(7, 77)));
}

TEST_F(process_message, sending_without_a_receiver_answers_one_at_once) {
    auto interface = QDBusConnection::sessionBus().interface();
    ASSERT_NE(interface, nullptr);
    ASSERT_FALSE(interface->isServiceRegistered(input_method_service).value());
    ASSERT_FALSE(interface->isServiceRegistered(plugin_manager_service).value());

    auto sent = std::async(std::launch::async, [] {
        return std::vector<int>{post_message_to_other_process(nullptr, 9, 0, 1),
                                sendQIRO(nullptr, 11, 0, 1), sendManager(nullptr, 1, 0, 1),
                                post_message_to_other_process(nullptr, 5, 0, 1)};
    });
    ASSERT_EQ(sent.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(sent.get(), (std::vector<int>{1, 1, 1, 1}));
}

TEST_F(process_message, sending_without_a_session_bus_answers_at_once) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/qiro-framework-bus");
    environment.remove("DISPLAY");
    QProcess probe;
    probe.setProcessEnvironment(environment);
    probe.start(QIRO_SEND_PROBE, {});
    ASSERT_TRUE(probe.waitForFinished(20000));
    EXPECT_EQ(probe.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(probe.exitCode(), 0);
    EXPECT_EQ(probe.readAllStandardOutput().toStdString(), "1\n1\n0\n");
}
