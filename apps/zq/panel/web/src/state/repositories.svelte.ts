// The repositories, which of them is looked at, and its search options.
import * as api from '../api/client.ts';
import type { OptionGroup, Repository } from '../api/types.ts';
import { read, write } from './memory.ts';

class Repositories {
  list = $state.raw<Repository[]>([]);
  shortName = $state('');
  groups = $state.raw<OptionGroup[]>([]);
  // The options that were read are those of this repository.
  groupsOf = $state('');

  get current(): Repository | undefined {
    return this.list.find((repository) => repository.shortName === this.shortName);
  }

  find(shortName: string): Repository | undefined {
    return this.list.find((repository) => repository.shortName === shortName);
  }

  set(list: Repository[]): void {
    this.list = list;
    if (this.current === undefined) {
      const last = read('repository');
      this.shortName = (this.find(last) ?? list[0])?.shortName ?? '';
    }
  }

  replace(repository: Repository): void {
    this.list = this.list.map((other) => (other.shortName === repository.shortName ? repository : other));
  }

  choose(shortName: string): void {
    this.shortName = shortName;
    write('repository', shortName);
  }

  async loadOptions(): Promise<void> {
    const shortName = this.shortName;
    let groups: OptionGroup[] = [];
    try {
      ({ groups } = await api.getOptions(shortName));
    } finally {
      this.#take(shortName, groups);
    }
  }

  async setOption(group: number, index: number, value: string): Promise<void> {
    const shortName = this.shortName;
    const { groups } = await api.setOption(shortName, group, index, value);
    this.#take(shortName, groups);
  }

  // An answer that comes after another repository was chosen is of no use any more.
  #take(shortName: string, groups: OptionGroup[]): void {
    if (shortName === this.shortName) {
      this.groups = groups;
      this.groupsOf = shortName;
    }
  }
}

export const repositories = new Repositories();
