#include "cli/Commands.h"

#include <cstdio>
#include <cstring>
#include <exception>

namespace {

struct Command {
    const char* name;
    int (*run)(waxline::cli::Arguments&);
    const char* usage;
    const char* help; // what the command does and what each option means
};

const Command kCommands[] = {
    {"analyse", waxline::cli::analyseCommand,
     "analyse FILE.wav [--preset none|riaa|chrome|brightspin] [--output OUT.wav] [--tracks]",
     "Runs a stereo WAV through the live input chain and prints the gap detector's events.\n"
     "  --preset P       equalisation: none (default), riaa, chrome or brightspin\n"
     "  --output OUT.wav writes the equalised stream (never the input file itself)\n"
     "  --tracks         lists the tracks the offline track finder proposes\n"
     "  --timing         prints how fast the chain ran\n"},
    {"make-demo-side", waxline::cli::makeDemoSideCommand,
     "make-demo-side OUT.wav [--tracks N] [--seed S] [--length SECONDS] [--realistic]",
     "Writes a synthetic record side: music-like passages, gaps of surface noise, a run-out.\n"
     "  --tracks N       1 to 40 tracks (default 5)\n"
     "  --seed S         the side's random seed (default 1)\n"
     "  --length SECONDS the whole side's length, up to 4 hours (default: 46 to 80 s a track)\n"
     "  --realistic      fades, quiet passages, hum, rumble and crackle bursts, as real sides\n"
     "                   have; without --tracks it takes 3 to 14 tracks from the seed\n"},
    {"devices", waxline::cli::devicesCommand,
     "devices [--virtual-device SETUP] [--latency [--input INPUT]]",
     "Lists the USB devices, audio inputs and outputs, and what detection finds.\n"
     "  --latency        measures the monitor's latency on the detected (or named) input\n"
     "  --input INPUT    an input by id, server name or shown name\n"},
    {"record", waxline::cli::recordCommand,
     "record [--virtual-device SETUP] [--input INPUT] [--preset auto|none|riaa|chrome|brightspin] "
     "[--split auto|off] [--gain DB] [--max-seconds N] [--export-dir DIR] [--discard] [--verbose] "
     "[--tracks N | --durations LIST | --lookup \"ARTIST - ALBUM\"] [--no-early-encoding]",
     "Records one side into the export folder, a WAV per track, and encodes each closed track\n"
     "to MP3 behind the recording (at idle priority), so that the export only tags them.\n"
     "  --input INPUT    record this input instead of the detected USB device\n"
     "  --preset P       equalisation: auto (by device), none, riaa, chrome or brightspin\n"
     "  --split auto|off split at the gaps (default) or record one track\n"
     "  --gain DB        file gain from -60 to 40 dB\n"
     "  --max-seconds N  stop after N seconds of recorded audio\n"
     "  --export-dir DIR the folder for the track files\n"
     "  --discard        record even though the folder holds a recording never exported\n"
     "  --verbose        shows the device and filter diagnostics, which otherwise go only to\n"
     "                   the log file beside the export folder (DIR.log)\n"
     "  --tracks N       the side holds N tracks (1 to 40): after the stop, the side is re-cut\n"
     "                   at the N - 1 most convincing gaps\n"
     "  --durations LIST the sleeve's durations (3:12,4:05,...) or numbering (A1-A5): after\n"
     "                   the stop, the side is re-cut to fit them\n"
     "  --no-early-encoding  encode nothing while recording; the export encodes every track\n"},
    {"export", waxline::cli::exportCommand,
     "export --artist A --album B [--title T]... [--normalise] [--tracks N] [--export-dir DIR] "
     "[--library DIR] [--jobs N] [--unicode-tags] [--format mp3|flac|both] [--clean clicks,hum] "
     "[--clean-flac] [--loudness] [--sheets]",
     "Encodes the recorded tracks to MP3, tags them and files them in the music library.\n"
     "  --artist A --album B   the names (either may be empty: \"\")\n"
     "  --title T        one per track, in order\n"
     "  --normalise      raises each track to full level first\n"
     "  --tracks N       export N tracks instead of the recorded count\n"
     "  --export-dir DIR the folder holding the track files\n"
     "  --library DIR    the music library (default: your music folder)\n"
     "  --jobs N         encodings at once (default: one per core)\n"
     "  --unicode-tags   tags hold the names as typed; without it each byte of a name is taken\n"
     "                   as a Latin-1 character, as the desktop application stores them\n"
     "  --format F       mp3 (default), flac, or both: the FLAC is the archive, the recording\n"
     "                   untouched, filed beside the MP3 under the same name\n"
     "  --clean LIST     clicks, hum or clicks,hum: repairs clicks and crackle and notches mains\n"
     "                   hum in the MP3s; the track files are never changed\n"
     "  --clean-flac     cleans the FLACs too\n"
     "  --loudness       measures each track and the side (EBU R128) and writes ReplayGain 2.0\n"
     "                   tags; the audio keeps its level\n"
     "  --sheets         a CUE sheet and a label file of the side beside the files (always with\n"
     "                   FLAC)\n"
     "More titles than tracks exports every track but exits 1, naming the unused titles.\n"
     "MP3s that record made while recording are taken as they are when their track file is\n"
     "unchanged since; any other track is encoded anew.\n"},
    {"digitize", waxline::cli::digitizeCommand,
     "digitize [--virtual-device SETUP] [--input INPUT] --artist A --album B [--title T]... "
     "[--preset auto|none|riaa|chrome|brightspin] [--split auto|off] [--gain DB] [--max-seconds N] "
     "[--normalise] [--format mp3|flac|both] [--clean clicks,hum] [--clean-flac] [--loudness] "
     "[--sheets] "
     "[--export-dir DIR] [--library DIR] [--jobs N] [--unicode-tags] [--discard] [--verbose] "
     "[--tracks N | --durations LIST | --lookup \"ARTIST - ALBUM\"] [--no-early-encoding]",
     "Records one side, then exports it: the options of record and export together.\n"
     "With --lookup \"Artist - Album\" (instead of --artist and --album) the side is looked up\n"
     "as waxline-cli lookup does, re-cut to the listing that fits it and named after it.\n"
     "With --tracks N or --durations LIST the side is re-cut as record does before the export.\n"
     "Interrupted (Ctrl-C), it keeps the tracks but exports nothing and exits 130.\n"},
    {"lookup", waxline::cli::lookupCommand,
     "lookup (--artist A --album B | --barcode CODE | --catno NUMBER) [--export-dir DIR]\n"
     "       waxline-cli lookup --release ID [--side S] [--apply] [--export-dir DIR]",
     "Finds the record in the MusicBrainz database and fits its listing to the recorded side.\n"
     "  --artist A --album B   search by names (either may be left out)\n"
     "  --barcode CODE   search by the barcode on the sleeve\n"
     "  --catno NUMBER   search by the label's catalogue number on the sleeve\n"
     "  --release ID     one release (its id from the list): its listing and its fit\n"
     "  --side S         fit that side only (A, B, ...)\n"
     "  --apply          re-cuts the side to the listing's tracks and keeps their names, the\n"
     "                   release's tags and its front cover for the export, which then needs\n"
     "                   no --artist, --album or --title\n"
     "Candidates list records and tapes first, each with its format, country, year, sides and\n"
     "how well it fits the side (which side, how fast the deck ran). The service allows one\n"
     "request a second, so fitting five candidates takes a few seconds. $WAXLINE_MUSICBRAINZ_URL\n"
     "and $WAXLINE_COVERART_URL replace the public services.\n"},
    {"splits", waxline::cli::splitsCommand,
     "splits [--export-dir DIR] [--tracks N | --durations LIST | --at TIMES] [--apply]",
     "Shows the last recording's live splits beside the whole-side splitter's proposal, with\n"
     "the confidence of each proposed boundary (doubtful below 0.5); times are m:ss.s.\n"
     "  --export-dir DIR the folder holding the track files (also --folder DIR)\n"
     "  --tracks N       the side holds N tracks (1 to 40), from the sleeve\n"
     "  --durations LIST the sleeve's durations, 3:12,4:05,..., or its numbering, A1-A5\n"
     "  --at TIMES       boundaries typed by hand: 1:23.4,4:56 (m:ss.s or seconds)\n"
     "  --apply          re-cuts the track files at the proposed (or typed) boundaries; the\n"
     "                   side stays the same frame for frame, MP3s made before are removed\n"},
    {"clean", waxline::cli::cleanCommand,
     "clean IN.wav --output OUT.wav [--clicks] [--hum 50|60|auto]",
     "Writes a cleaned copy of one sound file in its own format; the input is never changed.\n"
     "  --clicks         finds clicks and crackle and fills them in from the music around them;\n"
     "                   every other sample stays exactly as it was\n"
     "  --hum 50|60|auto looks for mains hum in the quiet stretches and notches it and its\n"
     "                   harmonics when it is there\n"},
};

const char* const kCommonHelp =
    "Every command takes --virtual-device SETUP (or $WAXLINE_VIRTUAL_DEVICE) to record from a WAV\n"
    "played as if by the turntable, and -h or --help.\n";

void printUsage(FILE* to) {
    std::fprintf(to, "Usage: waxline-cli COMMAND [ARGS]\n\nCommands:\n");
    for (const auto& c : kCommands)
        std::fprintf(to, "  waxline-cli %s\n", c.usage);
    std::fprintf(to, "\n%s'waxline-cli COMMAND --help' explains a command's options.\n",
                 kCommonHelp);
}

bool isHelp(const char* arg) {
    return !std::strcmp(arg, "-h") || !std::strcmp(arg, "--help");
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        printUsage(stderr);
        return 2;
    }
    if (isHelp(argv[1]) || !std::strcmp(argv[1], "help")) {
        printUsage(stdout);
        return 0;
    }
    for (const auto& c : kCommands) {
        if (std::strcmp(argv[1], c.name) != 0)
            continue;
        for (int i = 2; i < argc; ++i) {
            if (isHelp(argv[i])) {
                std::printf("Usage: waxline-cli %s\n\n%s\n%s", c.usage, c.help, kCommonHelp);
                return 0;
            }
        }
        waxline::cli::Arguments args(std::vector<std::string>(argv + 2, argv + argc));
        try {
            return c.run(args);
        } catch (const waxline::cli::BadValue& e) {
            std::fprintf(stderr, "waxline-cli %s: %s (see waxline-cli %s --help)\n", c.name,
                         e.what(), c.name);
            return 2;
        } catch (const waxline::cli::UsageError& e) {
            std::fprintf(stderr, "waxline-cli %s: %s\nUsage: waxline-cli %s\n", c.name, e.what(),
                         c.usage);
            return 2;
        } catch (const std::exception& e) {
            std::fprintf(stderr, "waxline-cli %s: %s\n", c.name, e.what());
            return 1;
        }
    }
    std::fprintf(stderr, "waxline-cli: unknown command '%s'\n", argv[1]);
    printUsage(stderr);
    return 2;
}
