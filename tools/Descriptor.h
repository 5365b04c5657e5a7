/*
 * File descriptors that close themselves.
 */
#pragma once

namespace desk {

class Descriptor {
  public:
    explicit Descriptor(int value) : mValue(value) {}
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return mValue; }

  private:
    int mValue;
};

// Something that poll can wait for. Once set it stays set.
class Event {
  public:
    // Throws std::system_error.
    Event();

    void set() const;
    int get() const { return mDescriptor.get(); }

  private:
    Descriptor mDescriptor;
};

}  // namespace desk
