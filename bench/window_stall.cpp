// The longest stall of the window's event loop while its panes take in large output: the
// whole path a run's output takes after the interpreter ended (the UTF-8 check, then the
// pane, which converts as it shows), against an idle event loop and against the plain text view the
// panes once were. Usage: QT_QPA_PLATFORM=offscreen window_stall

#include "window/output_pane.hpp"
#include "window/ui_controller.hpp"

#include <QApplication>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTimer>

#include <cstdio>
#include <functional>
#include <memory>

namespace {

using namespace qiro_plugin;

struct stall {
    qint64 longest_ms = 0;
    qint64 longest_after_feed_ms = 0; // the pane's own slices, the run's event left out
    qint64 total_ms = 0;
};

// Runs the event loop with a timer that notes the longest gap between its ticks; a_feed runs
// from the loop, as the end of a run does, and a_done says when the panes have caught up.
stall measure(const std::function<void()>& a_feed, const std::function<bool()>& a_done) {
    stall result;
    QElapsedTimer total;
    QElapsedTimer since_tick;
    QEventLoop loop;
    QTimer ticker;
    bool fed = false;
    ticker.setInterval(1);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 gap = since_tick.restart();
        result.longest_ms = std::max(result.longest_ms, gap);
        if (fed) {
            result.longest_after_feed_ms = std::max(result.longest_after_feed_ms, gap);
        }
        if (fed && total.elapsed() > 300 && a_done()) {
            loop.quit();
        }
    });
    QTimer::singleShot(100, [&] {
        a_feed();
        result.longest_ms = std::max(result.longest_ms, since_tick.restart());
        fed = true;
    });
    total.start();
    since_tick.start();
    ticker.start();
    loop.exec();
    result.total_ms = total.elapsed();
    return result;
}

const QPlainTextEdit* g_pane = nullptr;

void print(const char* a_name, const stall& a_stall) {
    if (g_pane != nullptr) {
        std::printf("[pane holds %d characters, %d blocks] ", g_pane->document()->characterCount(),
                    g_pane->document()->blockCount());
    }
    std::printf("%-44s longest stall %5lld ms (after the run's event %4lld ms), "
                "until shown %5lld ms\n",
                a_name, static_cast<long long>(a_stall.longest_ms),
                static_cast<long long>(a_stall.longest_after_feed_ms),
                static_cast<long long>(a_stall.total_ms));
    std::fflush(stdout);
}

std::string ordinary_lines(std::size_t a_bytes) {
    const std::string line =
        "an ordinary line of output from a plug-in, about eighty columns wide......\n";
    std::string text;
    text.reserve(a_bytes);
    while (text.size() + line.size() <= a_bytes) {
        text += line;
    }
    return text;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    auto& controller = debugger::ui_controller::getInstance();
    controller.window()->resize(1000, 700);
    controller.window()->show();
    auto* pane = controller.window()->findChild<debugger::output_pane*>(
        QStringLiteral("m_std_error_output_text_view"));
    g_pane = pane;
    const auto shown = [pane] { return !pane->is_showing(); };
    // What the run does after the interpreter ended: the output, as written, to the pane.
    const auto feed = [&controller](std::string a_output) {
        auto output = std::make_shared<const std::string>(std::move(a_output));
        return [&controller, output] {
            QElapsedTimer step;
            step.start();
            controller.clear_std_error_output_text();
            const qint64 cleared = step.restart();
            controller.add_std_error_output_utf8(*output);
            std::printf("  (in the run's own event: clear %lld ms, check and hand to the pane "
                        "%lld ms)\n",
                        static_cast<long long>(cleared), static_cast<long long>(step.elapsed()));
        };
    };

    print("idle event loop (reference)", measure([] {}, [] { return true; }));
    print("one 2 MiB line", measure(feed(std::string(2 * 1024 * 1024, 'e') + "\n"), shown));
    print("64 MiB of 76-column lines", measure(feed(ordinary_lines(64 * 1024 * 1024)), shown));
    print("clearing the 64 MiB pane",
          measure([&] { controller.clear_std_error_output_text(); }, [] { return true; }));

    // The pane as it was: one plain text view taking the whole text at once.
    QPlainTextEdit plain;
    plain.resize(1000, 300);
    plain.show();
    for (const int kib : {64, 256}) {
        const QString line(kib * 1024, QLatin1Char('e'));
        const std::string name = "plain view, one " + std::to_string(kib) + " KiB line (before)";
        print(name.c_str(), measure(
                                [&] {
                                    plain.clear();
                                    QTextCursor cursor(plain.document());
                                    cursor.insertText(line + QStringLiteral("\r\n"));
                                    plain.repaint();
                                },
                                [] { return true; }));
    }
    return 0;
}
