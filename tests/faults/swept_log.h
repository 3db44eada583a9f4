#pragma once

#include <string>

#include <boost/make_shared.hpp>

#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "tests/support/lines_receiver.h"

// The lines that the process log gets, while one lives.
class swept_log_t
{
public:
    swept_log_t() { Renew(); }
    ~swept_log_t() { logging::GetProcessLog()->set_receiver({}); }
    swept_log_t(const swept_log_t&) = delete;
    swept_log_t& operator=(const swept_log_t&) = delete;

    // The lines since the last call, without time and thread.
    std::string Taken()
    {
        std::string lines = WithoutHeads(m_receiver->text());
        Renew();
        return lines;
    }

private:
    // The log keeps the memory of its last message. It has some each time, whatever came before.
    void Renew()
    {
        logging::GetProcessLog()->set_receiver(boost::make_shared<lines_receiver_t>());
        logging::log_channel_t().info("A message for the sake of its memory.");
        m_receiver = boost::make_shared<lines_receiver_t>();
        logging::GetProcessLog()->set_receiver(m_receiver);
    }

    boost::shared_ptr<lines_receiver_t> m_receiver;
};
