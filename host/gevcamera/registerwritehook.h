#pragma once

#include <cstdint>
#include <functional>

typedef struct _ArvFakeCamera ArvFakeCamera;

/// Lets the program see every write a client makes to the fake camera's
/// memory, on the camera's own thread and before the write is acknowledged,
/// the way a camera's firmware acts on a register before it answers.
///
/// Aravis offers no hook for this, so the program defines the library's
/// exported arv_fake_camera_write_memory itself (the dynamic linker prefers the
/// executable's definition, also for the library's own calls) and forwards to
/// the library's. installed() tells whether the interposition took effect.
namespace RegisterWriteHook {

using Handler = std::function<void(uint32_t address, uint32_t size)>;

/// One camera at a time; an empty handler detaches.
void setHandler(ArvFakeCamera* camera, Handler handler);
/// Writes without telling the handler: the device's own updates.
bool writeMemory(ArvFakeCamera* camera, uint32_t address, uint32_t size, const void* data);
/// True once a write made through the library reached the hook.
bool installed(ArvFakeCamera* camera);

}  // namespace RegisterWriteHook
