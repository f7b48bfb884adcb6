// The library that the tests load.

extern "C" {

int g_iPluginLevel = 7;

int PluginAdd(int left, int right) { return left + right; }
}
