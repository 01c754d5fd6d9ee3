#include "registerwritehook.h"

#include <arv.h>
#include <dlfcn.h>

#include <mutex>

namespace {

using WriteMemory = gboolean (*)(ArvFakeCamera*, guint32, guint32, const void*);

WriteMemory library()
{
    static const WriteMemory real =
        reinterpret_cast<WriteMemory>(dlsym(RTLD_NEXT, "arv_fake_camera_write_memory"));
    return real;
}

std::mutex g_mutex;
ArvFakeCamera* g_camera = nullptr;
RegisterWriteHook::Handler g_handler;
thread_local int g_quiet = 0;  ///< > 0 while the device writes for itself
bool g_seen = false;

}  // namespace

extern "C" __attribute__((visibility("default"))) gboolean
arv_fake_camera_write_memory(ArvFakeCamera* camera, guint32 address, guint32 size, const void* buffer)
{
    const WriteMemory real = library();
    if (!real)
        return FALSE;
    const gboolean ok = real(camera, address, size, buffer);
    if (!ok || g_quiet > 0)
        return ok;
    RegisterWriteHook::Handler handler;
    {
        std::lock_guard<std::mutex> lock(g_mutex);
        g_seen = true;
        if (camera == g_camera)
            handler = g_handler;
    }
    if (handler) {
        ++g_quiet;  // what the handler writes back is the device's, not the client's
        handler(address, size);
        --g_quiet;
    }
    return ok;
}

namespace RegisterWriteHook {

void setHandler(ArvFakeCamera* camera, Handler handler)
{
    std::lock_guard<std::mutex> lock(g_mutex);
    g_camera = handler ? camera : nullptr;
    g_handler = std::move(handler);
}

bool writeMemory(ArvFakeCamera* camera, uint32_t address, uint32_t size, const void* data)
{
    ++g_quiet;
    const bool ok = arv_fake_camera_write_memory(camera, address, size, data);
    --g_quiet;
    return ok;
}

bool installed(ArvFakeCamera* camera)
{
    // The library's register write goes through its exported memory write.
    {
        std::lock_guard<std::mutex> lock(g_mutex);
        g_seen = false;
    }
    guint32 value = 0;
    arv_fake_camera_read_register(camera, ARV_FAKE_CAMERA_REGISTER_TEST, &value);
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_TEST, value);
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_seen;
}

}  // namespace RegisterWriteHook
