// What a clip that is dragged carries.

export const draggedClipType = 'application/x-zq-clip';

export interface DraggedClip {
  repository: string;
  clip: string;
  name: string;
}

export function writeDraggedClip(event: DragEvent, dragged: DraggedClip): void {
  event.dataTransfer?.setData(draggedClipType, JSON.stringify(dragged));
  if (event.dataTransfer !== null) {
    event.dataTransfer.effectAllowed = 'copy';
  }
}

// Null where something else is dragged, or a page of another origin made it up.
export function readDraggedClip(event: DragEvent): DraggedClip | null {
  try {
    const value: unknown = JSON.parse(event.dataTransfer?.getData(draggedClipType) ?? '');
    const dragged = value as Partial<DraggedClip> | null;
    return typeof dragged?.repository === 'string' &&
      typeof dragged.clip === 'string' &&
      typeof dragged.name === 'string'
      ? { repository: dragged.repository, clip: dragged.clip, name: dragged.name }
      : null;
  } catch {
    return null;
  }
}
