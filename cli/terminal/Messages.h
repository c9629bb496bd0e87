// The messages of the command, in printf form. docs/messages.md explains each of them; a test compares the two.
#pragma once

namespace vrn::cli::messages {

// Arguments.
inline constexpr char noCommand[] = "no command given";
inline constexpr char unknownCommand[] = "unknown command '%s'%s";
inline constexpr char optionRequired[] = "%s is required: %s";
inline constexpr char valueEmpty[] = "the value is empty";
inline constexpr char notWholeNumber[] = "%s is not a whole number";
inline constexpr char notInRange[] = "%s is not a whole number from %s";
inline constexpr char notPositive[] = "%s is not a finite number of at least 0";
inline constexpr char notDistance[] = "expected a distance, found nan";
inline constexpr char checkInPlace[] = "--check and --in-place exclude each other";
inline constexpr char notAChoice[] = "%s is not one of %s%s";
inline constexpr char rulesWithoutCatalogue[] = "--ignore and --pedantic require a catalogue: --types, or VRN_TYPES";
inline constexpr char outputInPlace[] = "--output and --in-place exclude each other";
inline constexpr char oneOutput[] = "--output takes one file; use --in-place for several";
inline constexpr char noEdits[] = "no edit given; use --set, --link, --add, --rename or --remove";
inline constexpr char malformedEdit[] = "'%s' is not of the form %s";
inline constexpr char hopsAlone[] = "--hops requires --around NODE";
inline constexpr char unknownPage[] = "no such command; vrn --help lists all commands";
inline constexpr char bothStandardInput[] =
    "standard input can be only one of the two scenes; name a file for the other";

// Files.
inline constexpr char outOfMemory[] = "out of memory";
inline constexpr char noSceneInFolder[] = "no *.vrn file in this folder or below it";
inline constexpr char catalogueError[] = "%s:%d:%d: error: %s\n";
inline constexpr char notFormatted[] = "%s:%d:%d: error: %s; not formatted\n";
inline constexpr char notEdited[] = "%s: error: %s; not edited (%s)\n";
inline constexpr char editedPlace[] = "%s: note: also here\n";

// Pictures of `vrn graph`.
inline constexpr char noSuchNode[] = "the scene has no such node%s";
inline constexpr char unknownPicture[] = "unknown picture format; use a name that ends in .dot, .svg, .png or .pdf";
inline constexpr char pictureTooLarge[] =
    "too large for a picture (%s, %s); select a part with --around NODE, or write a .dot file";
inline constexpr char dotMissing[] =
    "the program dot is not installed; install the package graphviz, or write a .dot file";
inline constexpr char dotNotStarted[] = "cannot start the program dot: %s";
inline constexpr char dotFailed[] = "the program dot failed; write a .dot file to inspect its input";

// Conversions.
inline constexpr char unwritableExtension[] = "no format with this extension can be written; supported: %s";
inline constexpr char unreadableExtension[] = "no format with this extension can be read; supported: %s";
inline constexpr char outputMissing[] = "name the file to write after the file to read";
inline constexpr char outputNotNamed[] = "several files are read only if -o OUT names the file to write";
inline constexpr char outputNeedsFolder[] =
    "this format consists of several files, which standard output cannot hold; use --to glb or --to ply";
inline constexpr char imagesTwice[] = "--embed excludes --copy-textures and --extract-textures";
inline constexpr char outputIsPlaced[] =
    "this format is always Y up and in metres; --to-up and --to-units are for .obj, .ply and .stl";
inline constexpr char inputTwice[] = "standard input can be read only once";
inline constexpr char trianglesOnlyOfModels[] = "--triangulate is for models, not for .vrn files";
inline constexpr char strictlyRefused[] = "not written, because of the lines above (--strict)";
inline constexpr char memoryLimit[] =
    "out of memory: its reader may have %llu MiB; set another limit with --max-memory";
inline constexpr char readerTooSlow[] = "its reader needs more time than %llu s (--timeout)";
inline constexpr char readerEndless[] =
    "its reader needs more time of the processor than it may have (--timeout and ulimit -t set other limits)";
inline constexpr char onlyOneForm[] = "only .ply and .stl files have a text form besides the binary one (--ascii)";
inline constexpr char notConverted[] = "not converted, because of the errors above";
inline constexpr char lost[] = "vrn: %s: lost: %s: %llu (%s%s)\n";
inline constexpr char readerWarning[] = "vrn: %s: warning: %s\n";
inline constexpr char readerWarnings[] = "vrn: %s: warning: %s (and %llu more like it)\n";
inline constexpr char readerCrashed[] = "its reader crashed: it is malformed, or its reader has a fault";
inline constexpr char readerKilled[] = "its reader was killed, perhaps for lack of memory";
inline constexpr char noProcess[] = "cannot start a process for the conversion";

} // namespace vrn::cli::messages
