#pragma once
/// \file
/// HxDisplaySystemDataCapture: description of one live plot of captured data.

#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlEnumType.h"
#include "framework/HxXmlSerialisable.h"

/// Describes one live plot for a host that displays a simulation while it runs: a title, the
/// capture configurations drawn against the left and the right axis, and the kind of plot
/// (0 "scrollingCurve", 1 "barChart"). It only holds and serialises the description. Written
/// as "displaySystemDataCapture" with the children "title", "leftSystemDataCapture",
/// "rightSystemDataCapture" and "plotType" (by name).
class HxDisplaySystemDataCapture : public HxXmlCompoundType {
 public:
  /// Plot type values.
  enum PlotType : unsigned int { ScrollingCurve = 0, BarChart = 1 };

  /// Empty title, two empty configurations, plot type 0 ("scrollingCurve").
  HxDisplaySystemDataCapture();

  /// Calls `registerEnumerations()`, then registers the title, the left and the right
  /// configuration and the plot type, in this order.
  void registerComponents() override;

  HX_XML_SERIALISABLE(HxDisplaySystemDataCapture);

  /// Compares the registered members in registration order.
  bool operator==(const HxDisplaySystemDataCapture& other) const { return componentsEqual(other); }

  /// The plot title.
  virtual const std::string& title() const;
  /// Replaces the plot title.
  virtual void setTitle(const std::string& title);
  /// The configuration drawn against the left axis.
  virtual const HxSystemDataCapture& leftSystemDataCapture() const;
  /// The configuration drawn against the left axis, to edit in place.
  virtual HxSystemDataCapture& leftSystemDataCapture();
  /// Replaces the configuration drawn against the left axis by a copy of `capture`.
  virtual void setLeftSystemDataCapture(const HxSystemDataCapture& capture);
  /// The configuration drawn against the right axis.
  virtual const HxSystemDataCapture& rightSystemDataCapture() const;
  /// The configuration drawn against the right axis, to edit in place.
  virtual HxSystemDataCapture& rightSystemDataCapture();
  /// Replaces the configuration drawn against the right axis by a copy of `capture`.
  virtual void setRightSystemDataCapture(const HxSystemDataCapture& capture);
  /// The plot type: a `PlotType` value, or whatever number `setPlotType` or the file gave.
  virtual unsigned int plotType() const;
  /// Sets the plot type by number, without a range check.
  virtual void setPlotType(unsigned int plotType);
  /// Sets the plot type by name; false (value unchanged) for a name that is not a plot type.
  virtual HxBoolean setPlotType(const std::string& name);
  /// Gives the plot-type field its names: 0 "scrollingCurve", then 1 "barChart".
  virtual void registerEnumerations();

  /// Number of plot types: 2.
  static unsigned int numPlotTypes();
  /// The plot-type names in value order: "scrollingCurve", "barChart".
  static const std::vector<std::string>& plotTypeTokens();

 private:
  HxXmlBasicType<std::string> title_;
  HxSystemDataCapture leftSystemDataCapture_;
  HxSystemDataCapture rightSystemDataCapture_;
  HxXmlEnumType<unsigned int> plotType_;
};
