# Written as sitecustomize.py into a private folder that PYTHONPATH names for one run of a
# plug-in's entry: measures the plug-in file alone with coverage.py, lines and branches, and
# writes coverage.py's JSON report when the interpreter exits.
import os
import sys


def _qiro_coverage_start():
    folder = os.path.dirname(os.path.abspath(__file__))
    plugin = os.environ.pop("QIRO_COVERAGE_PLUGIN", "")
    output = os.environ.pop("QIRO_COVERAGE_OUTPUT", "")
    # The plug-in sees the module search path it would see without this file.
    sys.path[:] = [entry for entry in sys.path if os.path.abspath(entry or ".") != folder]
    if not plugin or not output:
        return
    import atexit
    import glob
    import coverage

    measure = coverage.Coverage(
        data_file=None, branch=True, include=[glob.escape(plugin)], config_file=False
    )
    measure.start()

    def finish():
        measure.stop()
        measure.json_report(outfile=output)

    atexit.register(finish)


_qiro_coverage_start()
del _qiro_coverage_start

# The system's own sitecustomize, which this file hides, still runs.
del sys.modules["sitecustomize"]
try:
    import sitecustomize  # noqa: F401
except ImportError:
    pass
