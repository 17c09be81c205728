#include "Plugin/Algs/HandStats.h"

// The gesture state step. With the flags of this and the previous frame, the state of a frame is the first that holds:
//
//   STARTTOUCH    touching and not wasTouching
//   STARTHOLD     holding and not wasHolding
//   HOLDING       holding
//   SUPPRESSHOLD  suppressingHold
//   TOUCHING      touching
//   ENDHOLD       wasHolding
//   SUPPRESSTAP   tapCandidate and not tapDetected
//   TAP           tapDetected
//   ENDTOUCH      wasTouching
//   (idle)        none of these
//
//                                    +--> TAP | SUPPRESSTAP --> idle
//                                    | released
//   idle --> STARTTOUCH --> TOUCHING +--> STARTHOLD --> HOLDING --> ENDHOLD --> idle
//                                    | timed out   ^
//                                    |             | score recovers
//                                    +--> SUPPRESSHOLD --> ENDTOUCH --> idle
//                             score is low        released

namespace VeltoTouch {

void HandStats::updateGestureState(std::uint32_t timeMs) noexcept {
    wasHolding = holding;
    wasHoldTimedOut = holdTimedOut;
    wasSuppressingHold = suppressingHold;

    const bool timedOut = touching && elapsedMs(timeMs, touchStartTime) > holdTimeoutMs;
    if (!enableHoldSuppression) {
        // suppressingHold and holdTimedOut keep what they had when suppression was switched off.
        holding = timedOut;
    } else {
        const bool scoreIsLow = touchScore < holdScoreThreshold;
        holding = timedOut && (wasHolding || !scoreIsLow);
        suppressingHold = timedOut && scoreIsLow && !wasHolding;
        holdTimedOut = timedOut;
    }

    // Without hold suppression a hold's end is a candidate too; the event rules (Algs.cpp) put the hold's end first.
    const bool touchEnded = !touching && wasTouching;
    tapCandidate = touchEnded && !wasHoldTimedOut;
    if (!enableTapSuppression) {
        tapDetected = tapCandidate;
    } else {
        tapDetected = tapCandidate && !tapRejected;
        if (!touchEnded) {
            tapCandidate = false;
            tapRejected = false;
        } else if (wasHoldTimedOut) {
            tapRejected = false;
        }
    }

    if (tapDetected || (wasHolding && !holding)) {
        lastEventTime = timeMs;
        eventRegion = activeRegion;
    }
}

} // namespace VeltoTouch
