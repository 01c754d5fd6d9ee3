// Preloaded into a program under test: any call into Aravis's interface or
// discovery functions ends the program at once with exit code 99, before a
// single packet could be sent.
#include <cstdio>
#include <unistd.h>

namespace {
void tripped(const char* function)
{
    fprintf(stderr, "tripwire: %s called\n", function);
    fflush(stderr);
    _exit(99);
}
}  // namespace

extern "C" {

unsigned int arv_get_n_interfaces(void) { tripped("arv_get_n_interfaces"); return 0; }
void arv_enable_interface(const char* id) { tripped("arv_enable_interface"); }
void arv_disable_interface(const char* id) { tripped("arv_disable_interface"); }
void arv_update_device_list(void) { tripped("arv_update_device_list"); }
unsigned int arv_get_n_devices(void) { tripped("arv_get_n_devices"); return 0; }
void* arv_open_device(const char* id, void** error) { tripped("arv_open_device"); return nullptr; }
}
