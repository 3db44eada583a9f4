#pragma once

// The one object of its kind in a process: built by the first call that asks for it, released when the
// process exits. Callers that keep their share may use it for as long as they live; a call after the release,
// in the destructor of a static object for instance, builds a new one.
//
//   boost::shared_ptr<table_t> table_t::GetInstance()
//   {
//       return util::process_instance_tt<table_t>::Get([] { return boost::make_shared<table_t>(); });
//   }

#include <cstdlib>

#include <boost/shared_ptr.hpp>
#include <boost/thread/lock_guard.hpp>
#include <boost/thread/recursive_mutex.hpp>

namespace util
{

// A boost::mutex that cannot be locked throws boost::lock_error; a boost::recursive_mutex goes on.
template <class Object, class Mutex = boost::recursive_mutex>
class process_instance_tt
{
public:
    // Builds under a mutex, so that of several first calls one builds and the others wait. If building
    // throws, the next call tries again.
    template <class Build>
    static boost::shared_ptr<Object> Get(const Build& build)
    {
        holder_t& holder = Holder();
        const boost::lock_guard<Mutex> lock(holder.mutex);
        if (holder.instance == nullptr)
        {
            holder.instance = build();
            // A full table of exit handlers leaves the object to the end of the process.
            static_cast<void>(std::atexit(&Release));
        }
        return holder.instance;
    }

    // Builds the mutex. For a static initialiser, where that must happen before main.
    static bool Prepare()
    {
        Holder();
        return true;
    }

private:
    struct holder_t
    {
        Mutex mutex;
        boost::shared_ptr<Object> instance;
    };

    // Never destroyed: calls may come as late as they like.
    static holder_t& Holder()
    {
        static auto& holder = *new holder_t;
        return holder;
    }

    static void Release()
    {
        boost::shared_ptr<Object> last;
        const boost::lock_guard<Mutex> lock(Holder().mutex);
        last.swap(Holder().instance);
    }
};

} // namespace util
