#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tallyforge {

/// Runs ours and a peer in turn and prints for each pair
///
///     ITEM <tab> OURS <tab> PEER
///
/// in seconds of one operation. `--pairs N` says how many pairs, 9 unless given.
class PairedRuns {
  public:
    /// What is measured: the processor's time on all threads, which other programs do not disturb, or where
    /// waiting and sharing the work out count, the time that passes.
    enum class Clock { processor, wall };

    /// Ends the program when the words cannot be understood, or only ask what it does.
    PairedRuns(int argc, char** argv, std::string_view what, Clock clock = Clock::processor);

    /// Both do the operation once.
    void measure(std::string_view item, const std::function<void()>& ours,
                 const std::function<void()>& peer) const;
    /// Both do so many operations.
    void measureBatches(std::string_view item, int operations, const std::function<void()>& ours,
                        const std::function<void()>& peer) const;

    /// A fact about the item: `# ITEM <tab> REMARK`.
    static void remark(std::string_view item, const std::string& remark);
    /// For figures in remarks.
    static std::string figure(double value, int decimals);
    /// Processor seconds of one operation, the smallest of a few batches.
    static double secondsOf(const std::function<void()>& operation);

  private:
    int pairs_ = 9;
    Clock clock_;
};

} // namespace tallyforge
