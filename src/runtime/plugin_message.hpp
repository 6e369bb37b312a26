#pragma once
// The message library's two types: the polymorphic base of every plug-in message and the
// flag by which a host may ask a run to stop.

namespace qiro_plugin {

class abstract_qiro_plugin_message {
public:
    abstract_qiro_plugin_message() = default;
    abstract_qiro_plugin_message(const abstract_qiro_plugin_message&) = default;
    abstract_qiro_plugin_message& operator=(const abstract_qiro_plugin_message&) = default;
    virtual ~abstract_qiro_plugin_message() = default;
};

class qiro_plugin_message_quit_flag {
public:
    qiro_plugin_message_quit_flag() = default;
    explicit qiro_plugin_message_quit_flag(bool a_quit) : m_quit(a_quit) {}

    bool is_quit() const { return m_quit; }
    void set_quit(bool a_quit) { m_quit = a_quit; }

private:
    bool m_quit = false;
};

} // namespace qiro_plugin
