# Loads, but defines no entry.
LOADED = True
