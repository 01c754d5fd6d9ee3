#pragma once

#include "genicam/nodemap.h"
#include "kalto/idevice.h"
#include "kalto/itransportlayer.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

// A small device for tests: 8x4 Mono8 frames every few milliseconds on its own
// thread, whose pixels carry the frame number; it can be unplugged.
class FakeDevice : public Kalto::IDevice {
public:
    explicit FakeDevice(std::string id, int sfncMajor = 2) : m_map(id)
    {
        m_info.id = id;
        m_info.modelName = "Fake " + id;
        m_info.vendorName = "Test";
        m_info.serialNumber = "S" + id;
        m_map.addInteger("DeviceSFNCVersionMajor", 0, 9, 1, sfncMajor);
        m_map.addInteger("DeviceSFNCVersionMinor", 0, 9, 1, 1);
        m_map.addInteger("DeviceSFNCVersionSubMinor", 0, 9, 1, 0);
        m_map.setAccessMode("DeviceSFNCVersionMajor", Kalto::EAccessMode::RO);
        m_map.setAccessMode("DeviceSFNCVersionMinor", Kalto::EAccessMode::RO);
        m_map.setAccessMode("DeviceSFNCVersionSubMinor", Kalto::EAccessMode::RO);
        m_map.addFloat("ExposureTime", 10, 1e5, 0, 1000, "us");
        m_map.addFloat("Gain", 0, 24, 0, 0, "dB");
    }
    ~FakeDevice() override { stopAcquisition(); }

    Kalto::SDeviceInfo info() const override { return m_info; }
    void open() override
    {
        if (!m_connected)
            throw std::runtime_error("device gone");
        m_open = true;
    }
    void close() override
    {
        stopAcquisition();
        m_open = false;
    }
    bool isOpen() const override { return m_open; }
    bool isConnected() const override { return m_connected; }
    Kalto::CNodeMap& nodeMap() override { return m_map; }

    void startAcquisition(Kalto::EAcquisitionMode mode) override
    {
        if (!m_connected)
            throw std::runtime_error("device gone");
        stopAcquisition();
        m_acquiring = true;
        m_stop = false;
        m_thread = std::thread([this, mode] { run(mode); });
    }
    void stopAcquisition() override
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_stop = true;
        }
        m_wake.notify_all();
        if (m_thread.joinable() && m_thread.get_id() != std::this_thread::get_id())
            m_thread.join();
        m_acquiring = false;
    }
    bool isAcquiring() const override { return m_acquiring; }
    void setFrameSink(FrameSink sink) override
    {
        std::lock_guard<std::mutex> lock(m_sinkMutex);
        m_sink = std::move(sink);
    }
    void setConnectionLostHandler(ConnectionLostHandler handler) override
    {
        std::lock_guard<std::mutex> lock(m_sinkMutex);
        m_lost = std::move(handler);
    }

    void unplug()
    {
        m_connected = false;
        stopAcquisition();
        ConnectionLostHandler h;
        {
            std::lock_guard<std::mutex> lock(m_sinkMutex);
            h = m_lost;
        }
        if (h)
            h();
    }
    std::atomic<bool> silent{false};  // acquires but never delivers
    std::atomic<int> delivered{0};

private:
    void run(Kalto::EAcquisitionMode mode)
    {
        uint64_t n = 0;
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_stop) {
            m_wake.wait_for(lock, std::chrono::milliseconds(3));
            if (m_stop)
                break;
            if (silent)
                continue;
            auto data = std::make_shared<Kalto::CGrabResultData>();
            data->SetImage(std::vector<uint8_t>(32, static_cast<uint8_t>(n)), Kalto::PixelType_Mono8,
                           8, 4);
            data->SetImageNumber(n++);
            lock.unlock();
            {
                std::lock_guard<std::mutex> sinkLock(m_sinkMutex);
                if (m_sink)
                    m_sink(Kalto::CGrabResultPtr(data));
            }
            ++delivered;
            lock.lock();
            if (mode == Kalto::EAcquisitionMode::SingleFrame) {
                m_acquiring = false;
                break;
            }
        }
    }

    Kalto::SDeviceInfo m_info;
    Kalto::CNodeMap m_map;
    std::atomic<bool> m_open{false}, m_connected{true}, m_acquiring{false};
    std::mutex m_mutex, m_sinkMutex;
    std::condition_variable m_wake;
    bool m_stop = false;
    std::thread m_thread;
    FrameSink m_sink;
    ConnectionLostHandler m_lost;
};

class FakeLayer : public Kalto::ITransportLayer {
public:
    std::string name() const override { return "Fake"; }
    std::vector<Kalto::SDeviceInfo> enumerateDevices() override
    {
        std::vector<Kalto::SDeviceInfo> out;
        for (auto& d : devices)
            out.push_back(d->info());
        return out;
    }
    std::shared_ptr<Kalto::IDevice> createDevice(const std::string& id) override
    {
        for (auto& d : devices)
            if (d->info().id == id)
                return d;
        return nullptr;
    }
    std::vector<std::shared_ptr<FakeDevice>> devices;
};
