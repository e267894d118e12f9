// A library needs a source of its own.
