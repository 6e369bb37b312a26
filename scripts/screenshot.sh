#!/usr/bin/env bash
# Takes the README's pictures of the real window under Xvfb, from the tests' own windows:
# docs/preview.png and docs/settings-dialog.png from the workbench's tests, then the others.
# Needs a build (./test.sh or ./run.sh) first.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
export PATH="/usr/bin:/bin:$PATH"
mkdir -p "$root/docs"
QIRO_SCREENSHOT_DIR="$root/docs" QT_QPA_PLATFORM=xcb LANG=C.UTF-8 \
    xvfb-run -a -s "-screen 0 1280x1024x24" "$root/build/bin/debugger_workbench_tests" \
    preview_shows_candidates_comments_and_the_candidate_list \
    settings_dialog_writes_the_manager_settings_without_a_keyring
echo "screenshots: $root/docs/preview.png, settings-dialog.png"
# docs/diagnosis.png: the window after a run that raised, with its diagnosis under the panes.
QIRO_DIAGNOSIS_SCREENSHOT="$root/docs/diagnosis.png" QT_QPA_PLATFORM=xcb LANG=C.UTF-8 \
    xvfb-run -a -s "-screen 0 1280x1024x24" "$root/build/bin/diagnosis_list_tests" \
    a_failed_run_in_the_window_lists_its_findings_under_the_panes
echo "screenshot: $root/docs/diagnosis.png"
# docs/first-window-en.png and first-window-ja.png: the first window (first start, so its first
# size) after a run of the Python sample, in each language.
for language in en ja; do
    QIRO_SCREENSHOT_DIR="$root/docs" QIRO_TEST_LANGUAGE=$language QT_QPA_PLATFORM=xcb \
        LANG=C.UTF-8 xvfb-run -a -s "-screen 0 1280x1024x24" "$root/build/bin/window_texts_tests" \
        the_first_window_shows_a_runs_whole_summary
done
echo "screenshots: $root/docs/first-window-en.png, first-window-ja.png"
