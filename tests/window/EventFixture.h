#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <gtest/gtest.h>

namespace tallyforge::test {

/// A program of the toolkit's within the test, without a window.
class EventTest : public testing::Test {
  protected:
    EventTest() {
        if (QCoreApplication::instance()) return;
        static int count = 1;
        static char name[] = "test";
        static char* words[] = {name, nullptr};
        new QCoreApplication(count, words); // stays to the end of the program
    }
    /// Lets events come for so long.
    static void run(int milliseconds) {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < milliseconds)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
};

} // namespace tallyforge::test
