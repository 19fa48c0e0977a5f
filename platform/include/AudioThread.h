#pragma once

#include <atomic>
#include <string>
#include <thread>

// The platform's thread class: run() is called once on a thread of its own after
// start(); the body polls isRunning(), which prepareStop() clears.
class AudioThread {
  public:
    AudioThread(const char* name, int priority);
    virtual ~AudioThread();
    AudioThread(const AudioThread&) = delete;
    AudioThread& operator=(const AudioThread&) = delete;

    // 0 when the thread was started.
    int start();
    void prepareStop();
    void stop();
    void join();

  protected:
    virtual void run() = 0;
    bool isRunning() const { return running_.load(); }

  private:
    std::string name_;
    int priority_;
    std::atomic<bool> running_{false};
    std::thread thread_;
};

void AudioSleepMs(unsigned int milliseconds);
