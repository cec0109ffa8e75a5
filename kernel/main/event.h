#pragma once

namespace qel {
namespace main {

// A global notification: type id (from EventHandler::addEvent), data and source,
// whose meaning each event name fixes.
class Event
{
public:
    Event(unsigned long id, void* data, void* source, bool deleteData = false)
        : id(id), data(data), source(source), deleteData(deleteData)
    {
    }
    virtual ~Event() = default;

    unsigned long getID() const { return id; }
    unsigned long getType() const { return id; }
    void* getData() const { return data; }
    void* getSource() const { return source; }
    bool getDeleteData() const { return deleteData; }

private:
    unsigned long id;
    void* data;
    void* source;
    bool deleteData;
};

} // namespace main
} // namespace qel
