#!/usr/bin/env bash
# Takes docs/debug-in-editor.png with a real editor: Emacs with dap-mode (Debian's emacs-gtk and
# elpa-dap-mode) attaches to `qiro-lumen run --debug`, stops at a breakpoint in the Python
# sample, shows its locals and stack, is photographed, and continues. The round trip is checked
# on the way: the stop is at the breakpoint, `request` is among the locals, and after Continue
# the run exits 0 with the same output as a plain run. The Ruby sample makes the same round trip
# without a picture. The editor's configuration is the one `qiro-lumen debug-config emacs`
# prints. Needs a build (./test.sh or ./run.sh) first, and Xvfb and ImageMagick's import.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
export PATH="/usr/bin:/bin:$PATH"
bin="$root/build/bin"
written_form=変換

for tool in emacs Xvfb import xwininfo; do
    command -v $tool >/dev/null || {
        echo "editor-screenshot: $tool is missing (apt-get install emacs-gtk elpa-dap-mode" \
            "xvfb imagemagick x11-utils)" >&2
        exit 1
    }
done
[[ -x $bin/qiro-lumen ]] || {
    echo "editor-screenshot: no $bin/qiro-lumen; build first" >&2
    exit 1
}
# A debugger starts helpers of its own: keep a runaway chain from stalling the machine.
ulimit -u 400

work=$(mktemp -d "${TMPDIR:-/tmp}/qiro-editor-shot.XXXXXX")
pids=()
cleanup() {
    for pid in "${pids[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# The runs and the editor keep their files in a home of their own.
export HOME="$work/home"
mkdir -p "$HOME"
# No session bus for Emacs's toolkit: it would start daemons that outlive the script.
export DBUS_SESSION_BUS_ADDRESS=disabled: NO_AT_BRIDGE=1

# Without -noreset, the server resets when its first client leaves and refuses the next.
Xvfb -displayfd 5 -noreset -nolisten tcp -screen 0 1280x800x24 5>"$work/display" \
    2>"$work/xvfb.log" &
pids+=("$!")
for _ in $(seq 100); do
    [[ -s $work/display ]] && break
    sleep 0.1
done
display=$(cat "$work/display")
[[ -n $display ]] || {
    echo "editor-screenshot: Xvfb did not start:" >&2
    cat "$work/xvfb.log" >&2
    exit 1
}
export DISPLAY=":$display"
timeout 10 xwininfo -root >/dev/null

cat >"$work/driver.el" <<'ELISP'
;;; -*- lexical-binding: t -*-
;;; Sets the breakpoint, attaches with the template, and at the stop shows the locals and the
;;; stack, checks them, takes the picture and continues; exits 0 once the session has ended.
(setq inhibit-startup-screen t make-backup-files nil auto-save-default nil create-lockfiles nil
      native-comp-deferred-compilation nil)
(require 'dap-mode)
(require 'dap-ui)
;; lsp-treemacs 0.4 reads a variable that Debian 12's treemacs 2.8 does not define.
(defvar treemacs-text-scale nil)
(defvar qiro-plugin (getenv "QIRO_EDITOR_PLUGIN"))
(defvar qiro-line (string-to-number (getenv "QIRO_EDITOR_LINE")))
(defvar qiro-shot (getenv "QIRO_EDITOR_SHOT"))
(defvar qiro-stopped nil)
(defvar qiro-failed nil)
(defun qiro-say (format &rest arguments)
  (write-region (concat (apply #'format format arguments) "\n") nil (getenv "QIRO_EDITOR_LOG")
                t 'silent))
(defun qiro-fail (format &rest arguments)
  (setq qiro-failed t)
  (apply #'qiro-say (concat "FAILED: " format) arguments))
(tool-bar-mode -1)
(set-face-attribute 'default nil :family "DejaVu Sans Mono" :height 110)
(set-fontset-font t 'japanese-jisx0208 (font-spec :family "IPAGothic"))
(dap-mode 1)
(dap-ui-mode 1)
(setq dap-ui-buffer-configurations
      `((,dap-ui--locals-buffer . ((side . right) (slot . 1) (window-width . 0.42)))
        ;; Across the bottom, where a frame's whole path fits.
        (,dap-ui--sessions-buffer . ((side . bottom) (slot . 1) (window-height . 8)))))
(eval (car (read-from-string (concat "(progn " (getenv "QIRO_EDITOR_CONFIG") ")"))))
(find-file qiro-plugin)
(display-line-numbers-mode 1)
(goto-char (point-min))
(forward-line (1- qiro-line))
(dap-breakpoint-add)

(defun qiro-after-stop ()
  (let ((frame (dap--debug-session-active-frame (dap--cur-session))))
    (unless (and frame (equal (gethash "line" frame) qiro-line)
                 (equal (file-truename (gethash "path" (gethash "source" frame)))
                        (file-truename qiro-plugin)))
      (qiro-fail "stopped elsewhere: %S" (and frame (gethash "name" frame)))))
  (dap-ui-locals)
  (dap-ui-sessions)
  (with-current-buffer dap-ui--sessions-buffer
    (setq truncate-lines t))
  (run-with-timer 2 nil #'qiro-expand 0))

(defun qiro-expand (step)
  ;; The stack arrives one level per request: open the session, then its thread; then open
  ;; request among the locals. The sessions view's first line is its hidden root.
  (pcase step
    (0 (with-current-buffer dap-ui--sessions-buffer
         (goto-char (point-min))
         (forward-line 1)
         (treemacs-TAB-action)))
    (1 (with-current-buffer dap-ui--sessions-buffer
         (goto-char (point-min))
         (forward-line 2)
         (treemacs-TAB-action)))
    (2 (with-current-buffer dap-ui--locals-buffer
         (goto-char (point-min))
         (if (re-search-forward "^ *[▸▾]? *request:" nil t)
             (treemacs-TAB-action)
           (qiro-fail "no request among the locals: %s" (buffer-string))))))
  (run-with-timer 1.5 nil (if (< step 2) (lambda () (qiro-expand (1+ step))) #'qiro-check)))

(defun qiro-check ()
  (with-current-buffer dap-ui--sessions-buffer
    (unless (string-match-p (regexp-quote (format "%s:%d)" (file-name-nondirectory qiro-plugin)
                                                  qiro-line))
                            (buffer-string))
      (qiro-fail "the stack does not show the plug-in's frame: %s" (buffer-string))))
  (select-window (get-buffer-window (get-file-buffer qiro-plugin)))
  (recenter)
  (message "Stopped at %s:%d" (file-name-nondirectory qiro-plugin) qiro-line)
  (redisplay t)
  (when (and qiro-shot (not (string-empty-p qiro-shot)))
    (unless (eq 0 (call-process "import" nil nil nil "-window" "root" qiro-shot))
      (qiro-fail "import could not take the picture")))
  (let ((session (dap--cur-session)))
    (dap-continue session (dap--debug-session-thread-id session))))

(add-hook 'dap-stopped-hook
          (lambda (_session)
            (unless qiro-stopped
              (setq qiro-stopped t)
              (qiro-say "stopped")
              (run-with-timer 1 nil #'qiro-after-stop))))
(add-hook 'dap-terminated-hook
          (lambda (_session)
            (qiro-say "session ended")
            (run-with-timer 1 nil #'kill-emacs (if (and qiro-stopped (not qiro-failed)) 0 4))))
(run-with-timer 90 nil (lambda ()
                         (qiro-fail "no stop and no end within 90 s")
                         (with-current-buffer "*Messages*" (qiro-say "%s" (buffer-string)))
                         (kill-emacs 3)))
(dap-debug (cdr (assoc (getenv "QIRO_EDITOR_TEMPLATE") dap-debug-template-configurations)))
ELISP

# round_trip PLUGIN LINE [PICTURE]
round_trip() {
    local plugin="$bin/plugin/$1" line=$2 shot=${3:-} name=$1
    local plain="$work/$name.plain" debugged="$work/$name.debugged" err="$work/$name.err"
    timeout 60 "$bin/qiro-lumen" run "$plugin" "$written_form" >"$plain" 2>"$plain.err"
    timeout 180 "$bin/qiro-lumen" run --debug "$plugin" "$written_form" >"$debugged" 2>"$err" &
    local run=$!
    pids+=("$run")
    local port=""
    for _ in $(seq 100); do
        port=$(sed -n 's/^debug: waiting for a debugger on 127\.0\.0\.1:\([0-9]*\) .*/\1/p' "$err")
        [[ -n $port ]] && break
        sleep 0.1
    done
    [[ -n $port ]] || {
        echo "editor-screenshot: $name: no waiting line:" >&2
        cat "$err" >&2
        exit 1
    }
    local status=0
    QIRO_EDITOR_CONFIG="$("$bin/qiro-lumen" debug-config emacs --port "$port" "$plugin" 2>/dev/null)" \
        QIRO_EDITOR_TEMPLATE="QIRO Lumen: $name" QIRO_EDITOR_PLUGIN="$plugin" \
        QIRO_EDITOR_LINE=$line QIRO_EDITOR_SHOT="$shot" QIRO_EDITOR_LOG="$work/$name.log" \
        TMPDIR="$work" timeout 150 emacs -q -fs -l "$work/driver.el" >"$work/$name.emacs" 2>&1 || status=$?
    local run_status=0
    wait $run || run_status=$?
    if ((status != 0)) || ((run_status != 0)) || ! cmp -s "$plain" "$debugged"; then
        echo "editor-screenshot: $name: editor $status, run $run_status" >&2
        cat "$work/$name.log" "$err" >&2 || true
        diff "$plain" "$debugged" >&2 || true
        exit 1
    fi
    echo "editor-screenshot: $name: stopped at line $line, continued, same output as a plain run"
}

round_trip sample_python.py 35 "$work/debug-in-editor.png"
round_trip sample_ruby.rb 29
mkdir -p "$root/docs"
if command -v optipng >/dev/null; then
    optipng -quiet -o5 "$work/debug-in-editor.png"
fi
cp "$work/debug-in-editor.png" "$root/docs/debug-in-editor.png"
echo "screenshot: $root/docs/debug-in-editor.png ($(stat -c %s "$root/docs/debug-in-editor.png") bytes)"
