#pragma once

/// @file
/// Isotherms: their settings, and the band of palette entries.

#include <cstddef>

/// How an isotherm is set: a band of the picture that gets a colour of its own.
struct Isotherm {
    int type = 1;           ///< 0: below the lower limit, 1: between both, 2: above the upper one
    float width = 6.0F;     ///< °C, of a band given by width and centre
    float center = 20.0F;   ///< °C, likewise
    float minTemp = 20.0F;  ///< lower limit, °C, of a band given by its limits
    float maxTemp = 30.0F;  ///< upper limit, °C, likewise
    float lowRatio = 0.0F;  ///< lower limit as a fraction of the palette or of the window
    float highRatio = 1.0F; ///< upper limit, likewise
    /// What gives the limits: 0 temperatures, 1 fractions of the palette, 2 fractions of the window
    /// (`minTemp` and `maxTemp` in the mode `LEVELSPAN_HAND`), 3 the dew point. With any other
    /// value they stay as last converted, which `FPGA::setIsoPara` does from the temperatures.
    int reference = 0;
    int useMinMax = 0; ///< for temperatures, 0: `center` ± `width` / 2; else `minTemp`, `maxTemp`
    /// "Trans" (half band, half red), "Green", "Black", "White", "Red" or "Blue". Any other text,
    /// also one without an end, is taken as "Trans".
    char color[10] = "Trans";
};
// Hosts share this layout.
static_assert(sizeof(Isotherm) == 48 && offsetof(Isotherm, minTemp) == 12 &&
              offsetof(Isotherm, lowRatio) == 20 && offsetof(Isotherm, reference) == 28 &&
              offsetof(Isotherm, useMinMax) == 32 && offsetof(Isotherm, color) == 36);

/// An isotherm's settings and its band of palette entries; colours the band. Reentrant.
class [[gnu::visibility("default")]] ISOHandler {
public:
    /// The defaults of `Isotherm`, both ends of the band at entry 0.
    ISOHandler();
    void setIsoInfo(Isotherm iso); ///< takes the settings; the band stays
    Isotherm getIsoInfo();         ///< a copy of the settings
    /// Places the band from the palette indices of the upper and the lower limit, by the type:
    /// below, 0 to `minIndex`; between, `minIndex` to `maxIndex`; above, `maxIndex` to 255; cut to
    /// 0 to 255. -1 stands for a limit under the window, 256 for one over it. Another type keeps
    /// the band.
    void setIsoPosition(int maxIndex, int minIndex);
    /// Mixes one entry (Y, U, V) half and half with red, unless `index` lies below the band. A null
    /// pointer changes nothing, here and below.
    void calIsoColor(unsigned char* entry, unsigned char index);
    /// Colours the band in `table`, 261 entries of four bytes. Entry 258 becomes the isotherm's
    /// colour, 259 and 260 what entries 0 and 255 were; fourth bytes stay.
    void setIsoPalette(unsigned char* table);

protected:
    Isotherm m_isoInfo; ///< the settings
    int m_upperIndex;   ///< last palette entry of the band; the band is empty below `m_lowerIndex`
    int m_lowerIndex;   ///< first palette entry of the band
};
