// A shared object without a plug-in's entry point.
extern "C" __attribute__((visibility("default"))) int NotAnEntryPoint() { return 0; }
