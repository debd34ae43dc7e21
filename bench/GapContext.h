#pragma once

#include "filters/SideSplitter.h"

namespace Sonra::Audio::Filters {

// What the music either side of a quiet stretch says about it, for split_accuracy's --gaps
// table, from which gap classifiers are fitted and compared. A rest inside a piece is
// followed by more of the same piece: the same timbre, about the same loudness. A gap between
// tracks usually follows a fade or a ringing-out and comes before a new sound.
struct GapContext {
    double timbreDistance = 0; // dB: how far the spectral shapes of the music either side differ
    double levelStep = 0;      // dB: the music after against the music before
    double fadeBefore = 0;     // dB: how far the last second before the quiet lies below the music
    double attackAfter = 0;    // dB: the same for the first second after it
    double novelty = 0;        // the timbre change across the quiet over that within either side
    double shortestSide = 0;   // seconds of music measured on the shorter side

    // Seconds of music either side it compares, leaving out the edges next to the quiet.
    static constexpr double kReachSeconds = 20;
    static constexpr double kEdgeSeconds = 1;

    static GapContext measure(const SideSplitter& splitter, const SplitBoundary& gap);
};

} // namespace Sonra::Audio::Filters
