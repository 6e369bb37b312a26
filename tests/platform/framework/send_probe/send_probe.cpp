// Prints what post_message_to_other_process answers for messages 9, 1 and 8, one per line.
#include "platform/framework/process_message.hpp"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    using qiro_plugin::utility::post_message_to_other_process;
    for (int message : {9, 1, 8}) {
        std::printf("%d\n", post_message_to_other_process(nullptr, message, 0, 5));
    }
    return 0;
}
