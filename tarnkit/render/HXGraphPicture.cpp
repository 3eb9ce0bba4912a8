#include "tarnkit/render/HXGraphPicture.h"

#include "tarnkit/model/HXGroup.h"
#include "tarnkit/render/ConnectionIndex.h"
#include "tarnkit/render/GroupScene.h"
#include "tarnkit/render/SceneWriter.h"

namespace tarnkit {

std::string graphPicture(const HXGroup& group, const HXPictureOptions& options,
                         HXPictureReport* report) {
  const detail::ConnectionIndex connections(group);
  const detail::GroupScene scene(group, connections);
  std::string svg;
  detail::SceneWriter writer(scene, options, svg);
  writer.write();
  if (report) *report = {writer.width(), writer.height(), scene.laidOut, scene.notes};
  return svg;
}

}  // namespace tarnkit
