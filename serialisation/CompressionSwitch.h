// The compression switch of the document writer (internal).
#ifndef KOVA_SERIALISATION_COMPRESSIONSWITCH_H_
#define KOVA_SERIALISATION_COMPRESSIONSWITCH_H_

namespace kova {

// Whether "IPLX_ACTIVATE_MAPPING_COMPRESSION" existed in the environment (any value) when the
// library was loaded; documents are then written in the compressed envelope. Fixed for the life of
// the process.
bool CompressionSwitchOn() noexcept;

}  // namespace kova

#endif  // KOVA_SERIALISATION_COMPRESSIONSWITCH_H_
