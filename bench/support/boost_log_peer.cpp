#include <fstream>

#include <boost/log/attributes/clock.hpp>
#include <boost/log/attributes/current_thread_id.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sinks/text_ostream_backend.hpp>
#include <boost/log/sources/channel_logger.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/support/date_time.hpp>
#include <boost/make_shared.hpp>

#include "bench/support/log_peers.h"

namespace
{

namespace blog = boost::log;
namespace expr = boost::log::expressions;

using backend_t = blog::sinks::text_ostream_backend;
using logger_t = blog::sources::channel_logger_mt<std::string>;

boost::shared_ptr<backend_t> Backend(const std::string& path)
{
    auto backend = boost::make_shared<backend_t>();
    backend->add_stream(boost::make_shared<std::ofstream>(path, std::ios::app));
    backend->auto_flush(true);
    return backend;
}

} // namespace

peer_t BoostLogTo(const std::string& path)
{
    const auto core = blog::core::get();
    core->add_global_attribute("Time", blog::attributes::local_clock());
    core->add_global_attribute("Thread", blog::attributes::current_thread_id());
    const auto sink = boost::make_shared<blog::sinks::synchronous_sink<backend_t>>(Backend(path));
    sink->set_formatter(
        expr::stream << '[' << expr::format_date_time<boost::posix_time::ptime>("Time", "%d.%m.%Y %H:%M:%S")
                     << "] <" << expr::attr<blog::attributes::current_thread_id::value_type>("Thread") << "> "
                     << expr::attr<std::string>("Channel") << "  | " << expr::smessage);
    core->add_sink(sink);
    const auto logger = boost::make_shared<logger_t>(blog::keywords::channel = "bench");
    return [logger](const std::string& text) { BOOST_LOG(*logger) << text; };
}
