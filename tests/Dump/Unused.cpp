// A library that is loaded and that nothing points at.
extern "C" int UnusedByAll();
extern "C" int UnusedByAll() { return 1; }
