#include "nelvo/logging/receiver/stdout_log.h"

#include <exception>
#include <iostream>

#include <boost/make_shared.hpp>

namespace logging::receiver
{
namespace
{

constexpr std::size_t kFrameSize = 74;

void PrintFrame() { std::cout << std::string(kFrameSize, '/') << std::endl; }

} // namespace

void stdout_log_file_t::write(const std::string& text) { std::cout << text; }

stdout_log_file_t::~stdout_log_file_t()
{
    try
    {
        PrintFrame();
    }
    catch (std::exception&)
    {
        // Standard output is gone, and with it the place to tell.
    }
}

boost::shared_ptr<log_file_t> create_stdout_log()
try
{
    const auto receiver = boost::make_shared<stdout_log_file_t>();
    PrintFrame();
    return receiver;
}
catch (std::exception& e)
{
    std::cout << "Failed to initialize stdout log." << std::endl << e.what() << std::endl;
    return {};
}

} // namespace logging::receiver
