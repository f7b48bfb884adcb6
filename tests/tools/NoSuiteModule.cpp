// A library without tests.
extern "C" __attribute__((visibility("default"))) int CountChannels() { return 8; }
