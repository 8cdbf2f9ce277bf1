#include "scoring/crop_analyzer.h"

#include <utility>

namespace vistaTrim {

CCropAnalyzer::CCropAnalyzer(IImage* image) : CCropAnalyzer(AnalysePicture(*image))
{
}

CCropAnalyzer::CCropAnalyzer(std::shared_ptr<const CPictureAnalysis> analysis)
    : Analysis(std::move(analysis)), WorkCols(Analysis->WorkCols), WorkRows(Analysis->WorkRows),
      SourceCols(Analysis->SourceCols), SourceRows(Analysis->SourceRows),
      BorderBand(Analysis->BorderBand), ScaleFactor(Analysis->ScaleFactor),
      ContrastMaskTotal(Analysis->Totals[MapContrastMask]),
      ColorContrastTotal(Analysis->Totals[MapColorContrast]), EdgeTotal(Analysis->Totals[MapEdge]),
      PeakTotal(Analysis->Totals[MapPeak]), SideGain(Analysis->SideGain),
      ContrastMap(Analysis->Maps[MapContrast]), SaliencyMap(Analysis->Maps[MapSaliency]),
      ContrastMask(Analysis->Maps[MapContrastMask]),
      ColorContrastMap(Analysis->Maps[MapColorContrast]), PeakMap(Analysis->Maps[MapPeak]),
      ContrastTable(Analysis->Tables[MapContrast]), SaliencyTable(Analysis->Tables[MapSaliency]),
      ContrastMaskTable(Analysis->Tables[MapContrastMask]),
      ColorContrastTable(Analysis->Tables[MapColorContrast]), PeakTable(Analysis->Tables[MapPeak]),
      EdgeMap(Analysis->Maps[MapEdge]), EdgeTable(Analysis->Tables[MapEdge]),
      SideMaps(&Analysis->Maps[MapSideTop]), SideTables(&Analysis->Tables[MapSideTop])
{
}

} // namespace vistaTrim
