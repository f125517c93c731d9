// Labels of connected groups.
#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

KUV_BENCHMARK(kuviLabelMarkers_16u_C1IR, "noise", Labelled<Markers::noise>)
KUV_BENCHMARK(kuviLabelMarkers_16u_C1IR, "blobs", Labelled<Markers::blobs>)
KUV_BENCHMARK(kuviLabelMarkers_16u_C1IR, "lines", Labelled<Markers::lines>)
KUV_BENCHMARK(kuviLabelMarkers_16u_C1IR, "noise 4 neighbours", Labelled<Markers::noise, kuvLabelNeighbours4>)
