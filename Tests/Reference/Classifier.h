#pragma once
#include "Tests/Reference/Pixels.h"
#include <functional>
namespace VeltoTouch::Reference {
struct SVM {
    float score = 0.0f;
    std::vector<float> means = {559.2485f, 458.1396f, 409.6764f, 376.5288f, 339.7854f, 302.5308f, 281.1469f, 258.9062f,
                                234.2004f, 215.7817f, 199.7768f, 184.8617f, 172.0251f, 160.0365f, 148.0888f, 135.208f,
                                124.4527f, 114.4343f, 104.0568f, 93.4508f,  83.6343f,  74.3161f,  65.3713f,  57.6177f,
                                50.8842f,  43.4918f,  37.2454f,  31.5491f,  26.5578f,  22.2556f,  18.6728f,  15.4697f,
                                12.7815f,  10.1925f,  7.6475f,   5.3422f,   3.7211f,   2.1581f};
    std::vector<float> stdDevs = {
        319.631f,  264.2479f, 238.355f,  222.3886f, 211.1872f, 206.0873f, 198.0056f, 189.2092f, 182.5528f, 177.034f,
        170.0103f, 163.5788f, 157.3571f, 151.1289f, 144.6578f, 138.2757f, 131.4855f, 124.7151f, 116.673f,  107.0524f,
        98.8414f,  91.5114f,  84.5376f,  78.8144f,  72.6408f,  64.3881f,  58.6809f,  51.8691f,  45.1187f,  39.4927f,
        35.9957f,  32.8257f,  29.4461f,  25.6704f,  20.1275f,  15.8161f,  11.7617f,  10.0508f};
    std::vector<float> weights = {2.0791f,  0.577f,   -0.0003f, 1.7971f,  0.8896f,  -0.194f,  -1.7877f, 1.9933f,
                                  0.5968f,  -0.6801f, -0.1372f, -0.4558f, 0.3444f,  0.1195f,  0.2427f,  0.2738f,
                                  -0.7458f, -0.2226f, -0.95f,   -0.238f,  0.0785f,  -1.6108f, -0.4774f, 0.3914f,
                                  -0.0379f, -0.5014f, 0.2391f,  0.5287f,  -0.3405f, 0.2821f,  0.8225f,  -0.5142f,
                                  -1.1009f, 0.3262f,  -1.7422f, 0.4487f,  0.0877f,  -0.2101f};
    float bias = 2.0083f;
    void updateSVMScore(const std::vector<Pixel>& pixels, const std::vector<VirtualPixel>& groups, float threshold) {
        score = 0.0f;
        std::vector<std::int32_t> values;
        for (const Pixel& pixel : pixels)
            values.push_back(pixel.value);
        for (const VirtualPixel& group : groups)
            values.push_back(group.value);
        std::sort(values.begin(), values.end(), std::greater<>());
        if (!(float(values.at(0)) > threshold) && values.at(1) < 76)
            return;
        float sum = 0.0f;
        for (std::size_t k = 0; k < 38; ++k)
            sum = sum + (float(values.at(k)) - means[k]) / stdDevs[k] * weights[k];
        score = bias + sum;
    }
};
} // namespace VeltoTouch::Reference
